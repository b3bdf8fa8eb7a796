-- ca_sum: what a picture's file is to hold, one row for each picture whose sum is known. Stations add rows and bring them
-- up to date.
-- RTRIM compares byte by byte, blanks at the end left out, as the server compares its texts.
CREATE TABLE IF NOT EXISTS ca_sum (
    sum_chart TEXT COLLATE RTRIM NOT NULL,  -- chart number
    sum_ymd TEXT COLLATE RTRIM NOT NULL,    -- date of capture, yyyymmdd
    sum_etc TEXT COLLATE RTRIM NOT NULL,    -- examination section, or movie
    sum_no INTEGER NOT NULL,                -- picture number, from 1
    sum_id TEXT NOT NULL,                   -- identity of the picture
    sum_hash TEXT NOT NULL,                 -- SHA-256 of the file, hex
    sum_bytes INTEGER NOT NULL DEFAULT 0,   -- length of the file
    sum_at TEXT NOT NULL DEFAULT '',        -- when the row came to say so: ISO 8601, UTC
    sum_state TEXT NOT NULL DEFAULT '',     -- live, deleted, trusted: reckoned from a file that was there already
    PRIMARY KEY (sum_chart, sum_ymd, sum_etc, sum_no, sum_id)
) WITHOUT ROWID;
