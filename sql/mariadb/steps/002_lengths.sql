-- Room for what the station stores, in tables that were made with shorter columns: sections and doctors' names of 100
-- characters, notes and findings of any length. May be run again. No column is added, moved or made shorter: leave out
-- the lines of columns that are longer already.
ALTER TABLE ca
    MODIFY ca_etc VARCHAR(100) NOT NULL,
    MODIFY ca_chamgo MEDIUMTEXT;
ALTER TABLE cap
    MODIFY cap_etc VARCHAR(100) NOT NULL,
    MODIFY cap_path VARCHAR(2000);
ALTER TABLE caso
    MODIFY caso_suname VARCHAR(100) NOT NULL DEFAULT '',
    MODIFY caso_etc VARCHAR(100) NOT NULL DEFAULT '',
    MODIFY caso_sogyon LONGTEXT,
    MODIFY caso_bigo LONGTEXT,
    MODIFY caso_doctor VARCHAR(100) NOT NULL DEFAULT '',
    MODIFY caso_hospital VARCHAR(200) NOT NULL DEFAULT '';
