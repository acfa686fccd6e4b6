-- Keys beyond 32 bits, and a schema that has more than it should.
UPDATE sqlite_sequence SET seq = 9223372036854775807;
INSERT INTO Sites (SiteKey, SiteIdentifier) VALUES (4294967297, 'Site 8'), (-1, 'Site 9');
CREATE TABLE "Version "" more" (a, b GENERATED ALWAYS AS (a || a) VIRTUAL, CHECK (a > 0));
CREATE INDEX Expression ON Sites (lower(SiteIdentifier)) WHERE SiteKey > 0;
