-- ca_study: what the study of a visit and examination section is to the clinic's PACS and on its discs, from the first
-- sending on, and what the hospital's worklist has ordered. The order may still come or change; the rest stays.
-- RTRIM compares byte by byte, blanks at the end left out, as the server compares its texts.
CREATE TABLE IF NOT EXISTS ca_study (
    st_chart TEXT COLLATE RTRIM NOT NULL,        -- chart number
    st_ymd TEXT COLLATE RTRIM NOT NULL,          -- date of capture, yyyymmdd
    st_etc TEXT COLLATE RTRIM NOT NULL,          -- examination section
    st_time TEXT NOT NULL DEFAULT '',            -- Study Time (0008,0030), HHmmss
    st_modality TEXT NOT NULL DEFAULT '',        -- Modality (0008,0060) of the pictures: ES, US, GM or XC
    st_body TEXT NOT NULL DEFAULT '',            -- Body Part Examined (0018,0015), may be empty
    st_side TEXT NOT NULL DEFAULT '',            -- Laterality (0020,0060): R, L or empty
    st_accession TEXT NOT NULL DEFAULT '',       -- Accession Number (0008,0050)
    st_procedure TEXT NOT NULL DEFAULT '',       -- Requested Procedure ID (0040,1001)
    st_proctext TEXT NOT NULL DEFAULT '',        -- Requested Procedure Description (0032,1060)
    st_code TEXT NOT NULL DEFAULT '',            -- Requested Procedure Code (0032,1064): code value,
    st_scheme TEXT NOT NULL DEFAULT '',          -- coding scheme
    st_codename TEXT NOT NULL DEFAULT '',        -- and meaning
    st_step TEXT NOT NULL DEFAULT '',            -- Scheduled Procedure Step ID (0040,0009)
    st_steptext TEXT NOT NULL DEFAULT '',        -- Scheduled Procedure Step Description (0040,0007)
    st_referring TEXT NOT NULL DEFAULT '',       -- Referring Physician's Name (0008,0090)
    PRIMARY KEY (st_chart, st_ymd, st_etc)
) WITHOUT ROWID;
