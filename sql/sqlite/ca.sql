-- ca: one row for each visit and examination section, with the operator's note.
-- The station writes whole rows by position (REPLACE INTO ca VALUES ...): keep the order and number of the columns.
-- The history of a chart (newest first) reads the primary key backwards.
-- RTRIM compares byte by byte, blanks at the end left out, as the server compares its texts.
CREATE TABLE IF NOT EXISTS ca (
    ca_chart TEXT COLLATE RTRIM NOT NULL,              -- chart number
    ca_yuhyung TEXT COLLATE RTRIM NOT NULL DEFAULT '', -- patient type
    ca_ymd TEXT COLLATE RTRIM NOT NULL,                -- date of capture, yyyymmdd
    ca_gubun TEXT COLLATE RTRIM NOT NULL,              -- kind, always A
    ca_etc TEXT COLLATE RTRIM NOT NULL,                -- examination section
    ca_chamgo TEXT,                                    -- note
    ca_extra TEXT COLLATE RTRIM,                       -- not used
    PRIMARY KEY (ca_chart, ca_ymd, ca_gubun, ca_etc)
) WITHOUT ROWID;
