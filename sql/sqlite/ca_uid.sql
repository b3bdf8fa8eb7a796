-- ca_uid: under what a visit is known to the clinic's PACS and on its discs, one row for each visit and examination
-- section that was given to others. A row is written once and stays, whatever the setup says afterwards. Other programs
-- find a visit's study here.
-- RTRIM compares byte by byte, blanks at the end left out, as the server compares its texts.
CREATE TABLE IF NOT EXISTS ca_uid (
    uid_chart TEXT COLLATE RTRIM NOT NULL,    -- chart number
    uid_ymd TEXT COLLATE RTRIM NOT NULL,      -- date of capture, yyyymmdd
    uid_etc TEXT COLLATE RTRIM NOT NULL,      -- examination section
    uid_study TEXT NOT NULL DEFAULT '',       -- Study Instance UID (0020,000D)
    uid_series TEXT NOT NULL DEFAULT '',      -- Series Instance UID (0020,000E)
    uid_institution TEXT NOT NULL DEFAULT '', -- institution that the identifiers are made from
    uid_root TEXT NOT NULL DEFAULT '',        -- root of the identifiers, empty for 2.25
    uid_patient TEXT NOT NULL DEFAULT '',     -- Patient ID (0010,0020)
    uid_issuer TEXT NOT NULL DEFAULT '',      -- Issuer of Patient ID (0010,0021), may be empty
    PRIMARY KEY (uid_chart, uid_ymd, uid_etc)
) WITHOUT ROWID;
