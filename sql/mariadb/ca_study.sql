-- ca_study: what the study of a visit and examination section is to the clinic's PACS and on its discs, from the first
-- sending on, and what the hospital's worklist has ordered. The order may still come or change; the rest stays.
CREATE TABLE IF NOT EXISTS ca_study (
    st_chart     VARCHAR(20)  NOT NULL,            -- chart number
    st_ymd       VARCHAR(8)   NOT NULL,            -- date of capture, yyyymmdd
    st_etc       VARCHAR(100) NOT NULL,            -- examination section
    st_time      VARCHAR(6)   NOT NULL DEFAULT '', -- Study Time (0008,0030), HHmmss
    st_modality  VARCHAR(2)   NOT NULL DEFAULT '', -- Modality (0008,0060) of the pictures: ES, US, GM or XC
    st_body      VARCHAR(16)  NOT NULL DEFAULT '', -- Body Part Examined (0018,0015), may be empty
    st_side      VARCHAR(1)   NOT NULL DEFAULT '', -- Laterality (0020,0060): R, L or empty
    st_accession VARCHAR(64)  NOT NULL DEFAULT '', -- Accession Number (0008,0050)
    st_procedure VARCHAR(64)  NOT NULL DEFAULT '', -- Requested Procedure ID (0040,1001)
    st_proctext  VARCHAR(64)  NOT NULL DEFAULT '', -- Requested Procedure Description (0032,1060)
    st_code      VARCHAR(64)  NOT NULL DEFAULT '', -- Requested Procedure Code (0032,1064): code value,
    st_scheme    VARCHAR(64)  NOT NULL DEFAULT '', -- coding scheme
    st_codename  VARCHAR(64)  NOT NULL DEFAULT '', -- and meaning
    st_step      VARCHAR(64)  NOT NULL DEFAULT '', -- Scheduled Procedure Step ID (0040,0009)
    st_steptext  VARCHAR(64)  NOT NULL DEFAULT '', -- Scheduled Procedure Step Description (0040,0007)
    st_referring VARCHAR(200) NOT NULL DEFAULT '', -- Referring Physician's Name (0008,0090)
    PRIMARY KEY (st_chart, st_ymd, st_etc)
) ENGINE = InnoDB DEFAULT CHARSET = utf8mb4 COLLATE = utf8mb4_bin;
