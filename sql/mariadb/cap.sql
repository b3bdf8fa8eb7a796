-- cap: one row for each stored still picture.
-- The station writes whole rows by position (REPLACE INTO cap VALUES ...): keep the order and number of the columns.
-- The list of a visit by number, and its highest number, are both read from the primary key.
CREATE TABLE IF NOT EXISTS cap (
    cap_chart   VARCHAR(20)   NOT NULL,            -- chart number
    cap_yuhyung VARCHAR(10)   NOT NULL DEFAULT '', -- patient type
    cap_ymd     VARCHAR(8)    NOT NULL,            -- date of capture, yyyymmdd
    cap_gubun   VARCHAR(1)    NOT NULL,            -- kind, always A
    cap_etc     VARCHAR(100)  NOT NULL,            -- examination section
    cap_no      SMALLINT      NOT NULL,            -- picture number, from 1
    cap_path    VARCHAR(2000),                     -- path of the picture file as it was stored, with slashes
    PRIMARY KEY (cap_chart, cap_ymd, cap_gubun, cap_etc, cap_no)
) ENGINE = InnoDB DEFAULT CHARSET = utf8mb4 COLLATE = utf8mb4_bin;
