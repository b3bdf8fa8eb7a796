-- ca_log: who did what with which patient's pictures, notes and reports. Stations only add rows; nobody changes one.
CREATE TABLE IF NOT EXISTS ca_log (
    log_no INTEGER PRIMARY KEY AUTOINCREMENT,  -- in the order of arrival
    log_id TEXT NOT NULL UNIQUE,               -- of the act: the same act again is none
    log_at TEXT NOT NULL,                      -- the computer's time: yyyy-mm-ddThh:mm:ss.zzz+hh:mm
    log_arrived TEXT NOT NULL DEFAULT (STRFTIME('%Y-%m-%d %H:%M:%f', 'now', 'localtime')),
    log_computer TEXT NOT NULL DEFAULT '',
    log_user TEXT NOT NULL DEFAULT '',         -- Linux user, the one behind sudo too: "root (kim)"
    log_program TEXT NOT NULL DEFAULT '',      -- capture-station, capture-station-admin, capture-station-sender
    log_run TEXT NOT NULL DEFAULT '',          -- of the program's run,
    log_seq INTEGER NOT NULL DEFAULT 0,        -- in which it is the act of that number: a gap shows a lost row
    log_kind TEXT NOT NULL,                    -- see src/records/acts.h
    log_refused INTEGER NOT NULL DEFAULT 0,    -- 1: it was refused
    log_chart TEXT COLLATE RTRIM NOT NULL DEFAULT '',
    log_ymd TEXT COLLATE RTRIM NOT NULL DEFAULT '',
    log_etc TEXT COLLATE RTRIM NOT NULL DEFAULT '',
    log_number INTEGER NOT NULL DEFAULT 0,     -- of the picture; 0 without one
    log_picture TEXT NOT NULL DEFAULT '',      -- its identity, where it is known
    log_detail TEXT NOT NULL DEFAULT '',
    log_before TEXT                            -- text that stood there before; null without one
);
CREATE INDEX IF NOT EXISTS ca_log_chart ON ca_log (log_chart, log_at);
CREATE INDEX IF NOT EXISTS ca_log_at ON ca_log (log_at);
CREATE TRIGGER IF NOT EXISTS ca_log_no_update BEFORE UPDATE ON ca_log
BEGIN SELECT RAISE(ABORT, 'ca_log: rows are only added'); END;
CREATE TRIGGER IF NOT EXISTS ca_log_no_delete BEFORE DELETE ON ca_log
BEGIN SELECT RAISE(ABORT, 'ca_log: rows are only added'); END;
-- REPLACE takes away what is in its way without asking the trigger of DELETE.
CREATE TRIGGER IF NOT EXISTS ca_log_no_replace BEFORE INSERT ON ca_log
WHEN EXISTS (SELECT 1 FROM ca_log WHERE log_id = NEW.log_id OR log_no = NEW.log_no)
BEGIN SELECT RAISE(IGNORE); END;
