-- ca_log: who did what with which patient's pictures, notes and reports. Stations only add rows; nobody changes one.
CREATE TABLE IF NOT EXISTS ca_log (
    log_no       BIGINT       NOT NULL AUTO_INCREMENT,  -- in the order of arrival
    log_id       CHAR(32)     NOT NULL,                 -- of the act: the same act again is none
    log_at       VARCHAR(29)  NOT NULL,                 -- the computer's time: yyyy-mm-ddThh:mm:ss.zzz+hh:mm
    log_arrived  TIMESTAMP(3) NOT NULL DEFAULT CURRENT_TIMESTAMP(3), -- the server's
    log_computer VARCHAR(64)  NOT NULL DEFAULT '',
    log_user     VARCHAR(64)  NOT NULL DEFAULT '',      -- Linux user, the one behind sudo too: "root (kim)"
    log_program  VARCHAR(32)  NOT NULL DEFAULT '',      -- capture-station, capture-station-admin, capture-station-sender
    log_run      CHAR(32)     NOT NULL DEFAULT '',      -- of the program's run,
    log_seq      INT          NOT NULL DEFAULT 0,       -- in which it is the act of that number: a gap shows a lost row
    log_kind     VARCHAR(20)  NOT NULL,                 -- see src/records/acts.h
    log_refused  TINYINT      NOT NULL DEFAULT 0,       -- 1: it was refused
    log_chart    VARCHAR(20)  NOT NULL DEFAULT '',
    log_ymd      VARCHAR(8)   NOT NULL DEFAULT '',
    log_etc      VARCHAR(100) NOT NULL DEFAULT '',
    log_number   INT          NOT NULL DEFAULT 0,       -- of the picture; 0 without one
    log_picture  VARCHAR(32)  NOT NULL DEFAULT '',      -- its identity, where it is known
    log_detail   VARCHAR(500) NOT NULL DEFAULT '',
    log_before   MEDIUMTEXT,                            -- text that stood there before; null without one
    PRIMARY KEY (log_id),
    UNIQUE KEY log_no (log_no),
    KEY log_chart (log_chart, log_at),
    KEY log_at (log_at)
) ENGINE = InnoDB DEFAULT CHARSET = utf8mb4 COLLATE = utf8mb4_bin;
