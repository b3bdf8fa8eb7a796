-- caso: one row for each findings report. The station makes this table itself when it is missing.
-- The station writes whole rows by position (REPLACE INTO caso VALUES ...): keep the order and number of the columns.
-- Each list key holds all columns of the report list, so that a search in the list reads none of the long texts.
CREATE TABLE IF NOT EXISTS caso (
    caso_yeonno   VARCHAR(20)  NOT NULL,            -- number of the report: year and six digits
    caso_chart    VARCHAR(20)  NOT NULL DEFAULT '', -- chart number
    caso_yuhyung  VARCHAR(10)  NOT NULL DEFAULT '', -- patient type
    caso_ymd      VARCHAR(8)   NOT NULL DEFAULT '', -- date of capture, yyyymmdd
    caso_suname   VARCHAR(100) NOT NULL DEFAULT '', -- patient's name
    caso_jumin    VARCHAR(20)  NOT NULL DEFAULT '', -- resident number with its dash
    caso_jinchal  VARCHAR(10)  NOT NULL DEFAULT '', -- examining doctor's code
    caso_etc      VARCHAR(100) NOT NULL DEFAULT '', -- examination section
    caso_no1      SMALLINT     NOT NULL DEFAULT 0,  -- picture numbers of the six places, 0 for an empty one
    caso_no2      SMALLINT     NOT NULL DEFAULT 0,
    caso_no3      SMALLINT     NOT NULL DEFAULT 0,
    caso_no4      SMALLINT     NOT NULL DEFAULT 0,
    caso_no5      SMALLINT     NOT NULL DEFAULT 0,
    caso_no6      SMALLINT     NOT NULL DEFAULT 0,
    caso_sogyon   LONGTEXT,                         -- findings
    caso_bigo     LONGTEXT,                         -- remarks
    caso_balymd   VARCHAR(8)   NOT NULL DEFAULT '', -- date of issue, yyyymmdd
    caso_myonheo  VARCHAR(20)  NOT NULL DEFAULT '', -- doctor's licence number
    caso_doctor   VARCHAR(100) NOT NULL DEFAULT '', -- doctor's name
    caso_yoyangno VARCHAR(20)  NOT NULL DEFAULT '', -- care institution number
    caso_hospital VARCHAR(200) NOT NULL DEFAULT '', -- name of the hospital
    PRIMARY KEY (caso_yeonno),
    KEY caso_visit (caso_chart, caso_ymd, caso_etc, caso_yeonno, caso_jinchal),
    KEY caso_list_chart (caso_chart, caso_yeonno, caso_yuhyung, caso_suname, caso_jumin, caso_ymd),
    KEY caso_list_yuhyung (caso_yuhyung, caso_yeonno, caso_chart, caso_suname, caso_jumin, caso_ymd),
    KEY caso_list_suname (caso_suname, caso_yeonno, caso_chart, caso_yuhyung, caso_jumin, caso_ymd),
    KEY caso_list_jumin (caso_jumin, caso_yeonno, caso_chart, caso_yuhyung, caso_suname, caso_ymd),
    KEY caso_list_ymd (caso_ymd, caso_yeonno, caso_chart, caso_yuhyung, caso_suname, caso_jumin)
) ENGINE = InnoDB DEFAULT CHARSET = utf8mb4 COLLATE = utf8mb4_bin;
