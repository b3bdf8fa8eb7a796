-- Keys of the report list, for a caso that was made without them. May be run again: a key that is there stays.
CREATE INDEX IF NOT EXISTS caso_visit ON caso (caso_chart, caso_ymd, caso_etc, caso_yeonno, caso_jinchal);
CREATE INDEX IF NOT EXISTS caso_list_yeonno ON caso (caso_yeonno, caso_chart, caso_yuhyung, caso_suname, caso_jumin, caso_ymd);
CREATE INDEX IF NOT EXISTS caso_list_chart ON caso (caso_chart, caso_yeonno, caso_yuhyung, caso_suname, caso_jumin, caso_ymd);
CREATE INDEX IF NOT EXISTS caso_list_yuhyung ON caso (caso_yuhyung, caso_yeonno, caso_chart, caso_suname, caso_jumin, caso_ymd);
CREATE INDEX IF NOT EXISTS caso_list_suname ON caso (caso_suname, caso_yeonno, caso_chart, caso_yuhyung, caso_jumin, caso_ymd);
CREATE INDEX IF NOT EXISTS caso_list_jumin ON caso (caso_jumin, caso_yeonno, caso_chart, caso_yuhyung, caso_suname, caso_ymd);
CREATE INDEX IF NOT EXISTS caso_list_ymd ON caso (caso_ymd, caso_yeonno, caso_chart, caso_yuhyung, caso_suname, caso_jumin);
