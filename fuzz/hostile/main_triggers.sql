-- Deletions that put back what they delete, and saves that are refused.
CREATE TRIGGER Undelete AFTER DELETE ON AntennaAlignment BEGIN
  INSERT INTO Sites (SiteIdentifier) VALUES ('Site 1');
END;
CREATE TRIGGER Refuse BEFORE DELETE ON Sites BEGIN SELECT RAISE(ABORT, 'kept'); END;
CREATE TRIGGER RollBack BEFORE INSERT ON PathAlignment BEGIN SELECT RAISE(ROLLBACK, 'refused'); END;
CREATE TRIGGER Forget BEFORE INSERT ON Height BEGIN SELECT RAISE(IGNORE); END;
