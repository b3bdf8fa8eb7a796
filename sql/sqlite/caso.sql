-- caso: one row for each findings report. The station makes this table itself when it is missing.
-- The station writes whole rows by position (REPLACE INTO caso VALUES ...): keep the order and number of the columns.
-- Each list key holds all columns of the report list, so that a search in the list reads none of the long texts.
-- RTRIM compares byte by byte, blanks at the end left out, as the server compares its texts.
CREATE TABLE IF NOT EXISTS caso (
    caso_yeonno TEXT COLLATE RTRIM NOT NULL,              -- number of the report: year and six digits
    caso_chart TEXT COLLATE RTRIM NOT NULL DEFAULT '',    -- chart number
    caso_yuhyung TEXT COLLATE RTRIM NOT NULL DEFAULT '',  -- patient type
    caso_ymd TEXT COLLATE RTRIM NOT NULL DEFAULT '',      -- date of capture, yyyymmdd
    caso_suname TEXT COLLATE RTRIM NOT NULL DEFAULT '',   -- patient's name
    caso_jumin TEXT COLLATE RTRIM NOT NULL DEFAULT '',    -- resident number with its dash
    caso_jinchal TEXT COLLATE RTRIM NOT NULL DEFAULT '',  -- examining doctor's code
    caso_etc TEXT COLLATE RTRIM NOT NULL DEFAULT '',      -- examination section
    caso_no1 INTEGER NOT NULL DEFAULT 0,                  -- picture numbers of the six places, 0 for an empty one
    caso_no2 INTEGER NOT NULL DEFAULT 0,
    caso_no3 INTEGER NOT NULL DEFAULT 0,
    caso_no4 INTEGER NOT NULL DEFAULT 0,
    caso_no5 INTEGER NOT NULL DEFAULT 0,
    caso_no6 INTEGER NOT NULL DEFAULT 0,
    caso_sogyon TEXT,                                     -- findings
    caso_bigo TEXT,                                       -- remarks
    caso_balymd TEXT COLLATE RTRIM NOT NULL DEFAULT '',   -- date of issue, yyyymmdd
    caso_myonheo TEXT COLLATE RTRIM NOT NULL DEFAULT '',  -- doctor's licence number
    caso_doctor TEXT COLLATE RTRIM NOT NULL DEFAULT '',   -- doctor's name
    caso_yoyangno TEXT COLLATE RTRIM NOT NULL DEFAULT '', -- care institution number
    caso_hospital TEXT COLLATE RTRIM NOT NULL DEFAULT '', -- name of the hospital
    PRIMARY KEY (caso_yeonno)
);
CREATE INDEX IF NOT EXISTS caso_visit ON caso (caso_chart, caso_ymd, caso_etc, caso_yeonno, caso_jinchal);
CREATE INDEX IF NOT EXISTS caso_list_yeonno ON caso (caso_yeonno, caso_chart, caso_yuhyung, caso_suname, caso_jumin, caso_ymd);
CREATE INDEX IF NOT EXISTS caso_list_chart ON caso (caso_chart, caso_yeonno, caso_yuhyung, caso_suname, caso_jumin, caso_ymd);
CREATE INDEX IF NOT EXISTS caso_list_yuhyung ON caso (caso_yuhyung, caso_yeonno, caso_chart, caso_suname, caso_jumin, caso_ymd);
CREATE INDEX IF NOT EXISTS caso_list_suname ON caso (caso_suname, caso_yeonno, caso_chart, caso_yuhyung, caso_jumin, caso_ymd);
CREATE INDEX IF NOT EXISTS caso_list_jumin ON caso (caso_jumin, caso_yeonno, caso_chart, caso_yuhyung, caso_suname, caso_ymd);
CREATE INDEX IF NOT EXISTS caso_list_ymd ON caso (caso_ymd, caso_yeonno, caso_chart, caso_yuhyung, caso_suname, caso_jumin);
