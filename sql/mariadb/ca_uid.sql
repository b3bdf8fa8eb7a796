-- ca_uid: under what a visit is known to the clinic's PACS and on its discs, one row for each visit and examination
-- section that was given to others. A row is written once and stays, whatever the setup says afterwards. Other programs
-- find a visit's study here.
CREATE TABLE IF NOT EXISTS ca_uid (
    uid_chart       VARCHAR(20)  NOT NULL,            -- chart number
    uid_ymd         VARCHAR(8)   NOT NULL,            -- date of capture, yyyymmdd
    uid_etc         VARCHAR(100) NOT NULL,            -- examination section
    uid_study       VARCHAR(64)  NOT NULL DEFAULT '', -- Study Instance UID (0020,000D)
    uid_series      VARCHAR(64)  NOT NULL DEFAULT '', -- Series Instance UID (0020,000E)
    uid_institution VARCHAR(64)  NOT NULL DEFAULT '', -- institution that the identifiers are made from
    uid_root        VARCHAR(24)  NOT NULL DEFAULT '', -- root of the identifiers, empty for 2.25
    uid_patient     VARCHAR(64)  NOT NULL DEFAULT '', -- Patient ID (0010,0020)
    uid_issuer      VARCHAR(64)  NOT NULL DEFAULT '', -- Issuer of Patient ID (0010,0021), may be empty
    PRIMARY KEY (uid_chart, uid_ymd, uid_etc)
) ENGINE = InnoDB DEFAULT CHARSET = utf8mb4 COLLATE = utf8mb4_bin;
