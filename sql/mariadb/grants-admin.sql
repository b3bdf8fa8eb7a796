-- The rights of the account by which whoever looks after the record of access reads and retires it, in a database called
-- clinic: for capture-station-admin history, notes, retire-log and patient with --db-user=. It is nobody's whose station
-- it is: keep its password apart from the setup's. The server's administrator runs it after grants.sql.
-- As it stands the server refuses it at the first statement, and the client stops there: put the account's password
-- between apostrophes in the place of PASSWORD_OF_THE_ADMINISTRATOR, and the database's, the account's and its machines'
-- names in the place of those below.
CREATE USER IF NOT EXISTS 'station_admin'@'%' IDENTIFIED BY PASSWORD_OF_THE_ADMINISTRATOR;
-- Reads the record, and retires years of it. Nobody is to change an entry.
GRANT SELECT, INSERT, DELETE ON `clinic`.ca_log TO 'station_admin'@'%';
GRANT SELECT ON `clinic`.ca TO 'station_admin'@'%';
GRANT SELECT ON `clinic`.cap TO 'station_admin'@'%';
GRANT SELECT ON `clinic`.caso TO 'station_admin'@'%';
GRANT SELECT ON `clinic`.ca_uid TO 'station_admin'@'%';
GRANT SELECT ON `clinic`.ca_study TO 'station_admin'@'%';
GRANT SELECT ON `clinic`.ca_sum TO 'station_admin'@'%';
-- Where all of a patient is to be removed (patient --remove), for as long as that takes:
-- GRANT DELETE ON `clinic`.ca TO 'station_admin'@'%';
-- GRANT DELETE ON `clinic`.cap TO 'station_admin'@'%';
-- GRANT DELETE ON `clinic`.caso TO 'station_admin'@'%';
-- GRANT DELETE ON `clinic`.ca_uid TO 'station_admin'@'%';
-- GRANT DELETE ON `clinic`.ca_study TO 'station_admin'@'%';
-- GRANT DELETE ON `clinic`.ca_sum TO 'station_admin'@'%';
