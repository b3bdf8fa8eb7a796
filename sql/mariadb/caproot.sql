-- caproot: the identity of the clinic's capture root, in one row, written by capture-station-admin; without it each
-- station remembers the root for itself.
CREATE TABLE IF NOT EXISTS caproot (
    caproot_no TINYINT     NOT NULL,            -- always 1
    caproot_id VARCHAR(40) NOT NULL DEFAULT '', -- what the root's mark holds
    PRIMARY KEY (caproot_no)
) ENGINE = InnoDB DEFAULT CHARSET = utf8mb4 COLLATE = utf8mb4_bin;
