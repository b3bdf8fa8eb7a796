-- ca_sum: what a picture's file is to hold, one row for each picture whose sum is known. Stations add rows and bring them
-- up to date.
CREATE TABLE IF NOT EXISTS ca_sum (
    sum_chart VARCHAR(20)  NOT NULL,             -- chart number
    sum_ymd   VARCHAR(8)   NOT NULL,             -- date of capture, yyyymmdd
    sum_etc   VARCHAR(100) NOT NULL,             -- examination section, or movie
    sum_no    SMALLINT     NOT NULL,             -- picture number, from 1
    sum_id    CHAR(32)     NOT NULL,             -- identity of the picture
    sum_hash  CHAR(64)     NOT NULL,             -- SHA-256 of the file, hex
    sum_bytes BIGINT       NOT NULL DEFAULT 0,   -- length of the file
    sum_at    VARCHAR(29)  NOT NULL DEFAULT '',  -- when the row came to say so: ISO 8601, UTC
    sum_state VARCHAR(10)  NOT NULL DEFAULT '',  -- live, deleted, trusted: reckoned from a file that was there already
    PRIMARY KEY (sum_chart, sum_ymd, sum_etc, sum_no, sum_id)
) ENGINE = InnoDB DEFAULT CHARSET = utf8mb4 COLLATE = utf8mb4_bin;
