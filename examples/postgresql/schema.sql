-- The table of alignments that ./load fills, and what is asked of it most. May be run again: nothing is lost.
--   psql -d DATABASE -f schema.sql

-- A line of 'tarnbeam-db export --format csv', column by column. It stays empty: loading goes through copies of it.
CREATE TABLE IF NOT EXISTS exported (
  key bigint NOT NULL,  -- in the file that it came from
  kind text NOT NULL,
  identifier text NOT NULL,
  sector text NOT NULL,
  position text NOT NULL,
  time timestamptz,
  target_azimuth real NOT NULL,
  target_tilt real NOT NULL,
  target_roll real NOT NULL,
  measured_azimuth real NOT NULL,
  measured_tilt real NOT NULL,
  measured_roll real NOT NULL,
  location_latitude double precision NOT NULL,
  location_longitude double precision NOT NULL,
  location_elevation double precision NOT NULL,
  far_end_latitude double precision,  -- of paths
  far_end_longitude double precision,
  far_end_elevation double precision,
  height_value double precision NOT NULL,
  height_source text NOT NULL,
  options_azimuth_offset real NOT NULL,
  options_tilt_inversion boolean NOT NULL,
  options_roll_precision integer,  -- of sites
  options_note text NOT NULL,
  options_thresholds_azimuth real NOT NULL,
  options_thresholds_tilt real NOT NULL,
  options_thresholds_roll real,  -- of sites
  options_thresholds_path_length real,  -- of paths
  deviation_azimuth real NOT NULL,
  deviation_tilt real NOT NULL,
  deviation_roll real,  -- of sites
  verdict text NOT NULL,
  uid uuid NOT NULL
);

CREATE TABLE IF NOT EXISTS alignments (
  LIKE exported,
  arrival bigint GENERATED ALWAYS AS IDENTITY,  -- the order in which they were loaded
  PRIMARY KEY (uid)
);
CREATE INDEX IF NOT EXISTS alignments_by_antenna
  ON alignments (kind, identifier, sector, position, time DESC NULLS LAST, arrival DESC);
CREATE INDEX IF NOT EXISTS alignments_by_time ON alignments (time);

-- Places on WGS 84, where PostGIS is there. What lies nowhere on Earth has none.
DO $$
BEGIN
  CREATE EXTENSION IF NOT EXISTS postgis;
  ALTER TABLE alignments
    ADD COLUMN IF NOT EXISTS place geography(PointZ, 4326) GENERATED ALWAYS AS (
      CASE WHEN abs(location_latitude) <= 90 AND abs(location_longitude) <= 180 THEN
        ST_SetSRID(ST_MakePoint(location_longitude, location_latitude, location_elevation), 4326)::geography
      END) STORED,
    ADD COLUMN IF NOT EXISTS far_end geography(PointZ, 4326) GENERATED ALWAYS AS (
      CASE WHEN abs(far_end_latitude) <= 90 AND abs(far_end_longitude) <= 180 THEN
        ST_SetSRID(ST_MakePoint(far_end_longitude, far_end_latitude, far_end_elevation), 4326)::geography
      END) STORED;
  CREATE INDEX IF NOT EXISTS alignments_by_place ON alignments USING gist (place);
EXCEPTION WHEN feature_not_supported OR undefined_file OR insufficient_privilege THEN
  RAISE NOTICE 'Without PostGIS: %', SQLERRM;
END $$;

-- The newest measurement of each antenna, as 'tarnbeam-db export --latest' has it.
CREATE OR REPLACE VIEW latest AS
  SELECT DISTINCT ON (kind, identifier, sector, position) *
  FROM alignments
  ORDER BY kind, identifier, sector, position, time DESC NULLS LAST, arrival DESC;

-- Those of them that have to be put right.
CREATE OR REPLACE VIEW failing AS SELECT * FROM latest WHERE verdict = 'fail';
