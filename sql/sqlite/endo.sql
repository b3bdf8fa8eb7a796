-- endo: endoscopy appointments whose mark tells that pictures were stored. The clinic's program adds the rows, the
-- station only sets the mark. The station makes this table itself when it is missing.
-- RTRIM compares byte by byte, blanks at the end left out, as the server compares its texts.
CREATE TABLE IF NOT EXISTS endo (
    endo_ykymd TEXT COLLATE RTRIM NOT NULL,              -- date of the appointment, yyyymmdd
    endo_chart TEXT COLLATE RTRIM NOT NULL,              -- chart number
    endo_jinchal TEXT COLLATE RTRIM NOT NULL DEFAULT '', -- examining doctor's code
    endo_check TEXT COLLATE RTRIM NOT NULL DEFAULT '',   -- 1: pictures are stored, 0: they were deleted
    PRIMARY KEY (endo_chart, endo_ykymd, endo_jinchal)
) WITHOUT ROWID;
