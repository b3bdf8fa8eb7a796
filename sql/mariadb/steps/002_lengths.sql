-- Room for what the station stores, in tables that were made with shorter columns: sections and doctors' names of 100
-- characters, notes and findings of any length. On MariaDB capture-station-admin upgrade-tables does this and more,
-- from the columns' own types and sets. This is for MySQL: a MODIFY takes what it doesn't name from the table, so each
-- column gets its set. Not for columns whose texts are in another set than they say. May be run again. No column is
-- added, moved or made shorter: leave out the lines of columns that are longer already.
SET SESSION sql_mode = 'STRICT_ALL_TABLES';
ALTER TABLE ca
    MODIFY ca_etc VARCHAR(100) CHARACTER SET utf8mb4 COLLATE utf8mb4_bin NOT NULL,
    MODIFY ca_chamgo MEDIUMTEXT CHARACTER SET utf8mb4 COLLATE utf8mb4_bin;
ALTER TABLE cap
    MODIFY cap_etc VARCHAR(100) CHARACTER SET utf8mb4 COLLATE utf8mb4_bin NOT NULL,
    MODIFY cap_path VARCHAR(2000) CHARACTER SET utf8mb4 COLLATE utf8mb4_bin;
ALTER TABLE caso
    MODIFY caso_suname VARCHAR(100) CHARACTER SET utf8mb4 COLLATE utf8mb4_bin NOT NULL DEFAULT '',
    MODIFY caso_etc VARCHAR(100) CHARACTER SET utf8mb4 COLLATE utf8mb4_bin NOT NULL DEFAULT '',
    MODIFY caso_sogyon LONGTEXT CHARACTER SET utf8mb4 COLLATE utf8mb4_bin,
    MODIFY caso_bigo LONGTEXT CHARACTER SET utf8mb4 COLLATE utf8mb4_bin,
    MODIFY caso_doctor VARCHAR(100) CHARACTER SET utf8mb4 COLLATE utf8mb4_bin NOT NULL DEFAULT '',
    MODIFY caso_hospital VARCHAR(200) CHARACTER SET utf8mb4 COLLATE utf8mb4_bin NOT NULL DEFAULT '';
