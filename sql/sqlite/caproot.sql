-- caproot: the identity of the clinic's capture root, in one row. Made by capture-station-admin; without it each station
-- remembers the root for itself.
CREATE TABLE IF NOT EXISTS caproot (
    caproot_no INTEGER PRIMARY KEY,         -- always 1
    caproot_id TEXT    NOT NULL DEFAULT ''  -- what the root's mark holds
);
