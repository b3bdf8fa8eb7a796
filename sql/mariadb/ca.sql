-- ca: one row for each visit and examination section, with the operator's note.
-- The station writes whole rows by position (REPLACE INTO ca VALUES ...): keep the order and number of the columns.
-- The history of a chart (newest first) reads the primary key backwards.
CREATE TABLE IF NOT EXISTS ca (
    ca_chart   VARCHAR(20)  NOT NULL,            -- chart number
    ca_yuhyung VARCHAR(10)  NOT NULL DEFAULT '', -- patient type
    ca_ymd     VARCHAR(8)   NOT NULL,            -- date of capture, yyyymmdd
    ca_gubun   VARCHAR(1)   NOT NULL,            -- kind, always A
    ca_etc     VARCHAR(100) NOT NULL,            -- examination section
    ca_chamgo  MEDIUMTEXT,                       -- note
    ca_extra   VARCHAR(100),                     -- not used
    PRIMARY KEY (ca_chart, ca_ymd, ca_gubun, ca_etc)
) ENGINE = InnoDB DEFAULT CHARSET = utf8mb4 COLLATE = utf8mb4_bin;
