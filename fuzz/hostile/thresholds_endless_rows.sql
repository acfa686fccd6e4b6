-- Rows without end where thresholds are read.
DROP TABLE AntennaAlignmentThresholds;
CREATE VIEW AntennaAlignmentThresholds AS
  WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n)
  SELECT i AS AntennaAlignmentKey, 1 AS SiteIdentifier, 1.0 AS AzimuthThreshold, 1.0 AS TiltThreshold,
    1.0 AS RollThreshold FROM n;
