-- cap: one row for each stored still picture.
-- The station writes whole rows by position (REPLACE INTO cap VALUES ...): keep the order and number of the columns.
-- The list of a visit by number, and its highest number, are both read from the primary key.
-- RTRIM compares byte by byte, blanks at the end left out, as the server compares its texts.
CREATE TABLE IF NOT EXISTS cap (
    cap_chart TEXT COLLATE RTRIM NOT NULL,              -- chart number
    cap_yuhyung TEXT COLLATE RTRIM NOT NULL DEFAULT '', -- patient type
    cap_ymd TEXT COLLATE RTRIM NOT NULL,                -- date of capture, yyyymmdd
    cap_gubun TEXT COLLATE RTRIM NOT NULL,              -- kind, always A
    cap_etc TEXT COLLATE RTRIM NOT NULL,                -- examination section
    cap_no INTEGER NOT NULL,                            -- picture number, from 1
    cap_path TEXT,                                      -- path of the picture file as it was stored, with slashes
    PRIMARY KEY (cap_chart, cap_ymd, cap_gubun, cap_etc, cap_no)
) WITHOUT ROWID;
