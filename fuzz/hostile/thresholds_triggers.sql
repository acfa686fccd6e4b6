-- Thresholds that can neither be added nor deleted.
CREATE TRIGGER KeepSite BEFORE DELETE ON AntennaAlignmentThresholds BEGIN SELECT RAISE(FAIL, 'kept'); END;
CREATE TRIGGER KeepPath BEFORE DELETE ON PathAlignmentThresholds BEGIN SELECT RAISE(ROLLBACK, 'kept'); END;
CREATE TRIGGER Refuse BEFORE INSERT ON PathAlignmentThresholds BEGIN SELECT RAISE(ABORT, 'refused'); END;
