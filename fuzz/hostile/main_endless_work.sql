-- A single row that takes for ever to calculate.
DROP TABLE Version;
CREATE VIEW Version AS
  WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n)
  SELECT max(i) AS VersionNumber FROM n;
