-- The rights of a station's account, what it needs and nothing else, in a database called clinic. The server's
-- administrator runs it after ca.sql, cap.sql, ca_uid.sql, ca_study.sql, ca_log.sql and ca_sum.sql, where the tables of the clinic's program are. caso and endo may be
-- missing: the station makes them, and may make no other table.
-- As it stands the server refuses it at the first statement, and the client stops there: put the account's password
-- between apostrophes in the place of PASSWORD_OF_THE_STATION, and the database's, the account's and its machines' names
-- in the place of those below.
CREATE USER IF NOT EXISTS 'station'@'%' IDENTIFIED BY PASSWORD_OF_THE_STATION;
GRANT SELECT, INSERT, UPDATE, DELETE ON `clinic`.ca TO 'station'@'%';
GRANT SELECT, INSERT, UPDATE, DELETE ON `clinic`.cap TO 'station'@'%';
GRANT SELECT, INSERT ON `clinic`.ca_uid TO 'station'@'%';
GRANT SELECT, INSERT, UPDATE ON `clinic`.ca_study TO 'station'@'%';
-- The record of access: who writes it neither reads nor changes it.
GRANT INSERT ON `clinic`.ca_log TO 'station'@'%';
GRANT SELECT, INSERT, UPDATE ON `clinic`.ca_sum TO 'station'@'%';
GRANT SELECT, INSERT, UPDATE, DELETE, CREATE ON `clinic`.caso TO 'station'@'%';
GRANT SELECT, UPDATE, CREATE ON `clinic`.endo TO 'station'@'%';
GRANT SELECT, UPDATE ON `clinic`.yk TO 'station'@'%';
GRANT SELECT ON `clinic`.wj TO 'station'@'%';
GRANT SELECT ON `clinic`.bh TO 'station'@'%';
GRANT SELECT ON `clinic`.jh TO 'station'@'%';
GRANT SELECT ON `clinic`.pt TO 'station'@'%';
GRANT SELECT ON `clinic`.doctor TO 'station'@'%';
GRANT SELECT ON `clinic`.so TO 'station'@'%';
-- Where the database is to remember the capture root, after caproot.sql. A station that may not read the table doesn't
-- know of it.
-- GRANT SELECT, INSERT, DELETE ON `clinic`.caproot TO 'station'@'%';
