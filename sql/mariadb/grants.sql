-- The rights of a station's account, in a database called clinic. The server's administrator runs it after ca.sql,
-- cap.sql, caso.sql and endo.sql; a clinic whose marks are in yk (CheckTable=1) leaves the line of endo out.
-- Put the account's name, its machines and its password in the place of those below.
CREATE USER IF NOT EXISTS 'station'@'%' IDENTIFIED BY 'password';
GRANT SELECT ON clinic.* TO 'station'@'%';
GRANT INSERT, UPDATE, DELETE ON clinic.ca TO 'station'@'%';
GRANT INSERT, UPDATE, DELETE ON clinic.cap TO 'station'@'%';
GRANT INSERT, UPDATE, DELETE ON clinic.caso TO 'station'@'%';
GRANT UPDATE ON clinic.endo TO 'station'@'%';
GRANT UPDATE ON clinic.yk TO 'station'@'%';
-- Where the table caproot has been made: lets an operator accept another capture root for all stations.
-- GRANT INSERT, DELETE ON clinic.caproot TO 'station'@'%';
