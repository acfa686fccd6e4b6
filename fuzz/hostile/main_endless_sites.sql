-- Rows without end where identifiers are listed.
PRAGMA foreign_keys = OFF;
ALTER TABLE Sites RENAME TO KnownSites;
CREATE VIEW Sites AS
  WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n)
  SELECT i AS SiteKey, 'Site ' || i AS SiteIdentifier FROM n;
