-- Keys of the report list, for a caso that was made without them. May be run again: a key that is there stays.
-- MySQL has no IF NOT EXISTS here: leave it out, and the lines whose keys are there.
ALTER TABLE caso
    ADD KEY IF NOT EXISTS caso_visit (caso_chart, caso_ymd, caso_etc, caso_yeonno, caso_jinchal),
    ADD KEY IF NOT EXISTS caso_list_chart (caso_chart, caso_yeonno, caso_yuhyung, caso_suname, caso_jumin, caso_ymd),
    ADD KEY IF NOT EXISTS caso_list_yuhyung (caso_yuhyung, caso_yeonno, caso_chart, caso_suname, caso_jumin, caso_ymd),
    ADD KEY IF NOT EXISTS caso_list_suname (caso_suname, caso_yeonno, caso_chart, caso_yuhyung, caso_jumin, caso_ymd),
    ADD KEY IF NOT EXISTS caso_list_jumin (caso_jumin, caso_yeonno, caso_chart, caso_yuhyung, caso_suname, caso_ymd),
    ADD KEY IF NOT EXISTS caso_list_ymd (caso_ymd, caso_yeonno, caso_chart, caso_yuhyung, caso_suname, caso_jumin);
