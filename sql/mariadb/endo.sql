-- endo: endoscopy appointments whose mark tells that pictures were stored. The clinic's program adds the rows, the
-- station only sets the mark. The station makes this table itself when it is missing.
CREATE TABLE IF NOT EXISTS endo (
    endo_ykymd   VARCHAR(8)  NOT NULL,            -- date of the appointment, yyyymmdd
    endo_chart   VARCHAR(20) NOT NULL,            -- chart number
    endo_jinchal VARCHAR(10) NOT NULL DEFAULT '', -- examining doctor's code
    endo_check   VARCHAR(1)  NOT NULL DEFAULT '', -- 1: pictures are stored, 0: they were deleted
    PRIMARY KEY (endo_chart, endo_ykymd, endo_jinchal)
) ENGINE = InnoDB DEFAULT CHARSET = utf8mb4 COLLATE = utf8mb4_bin;
