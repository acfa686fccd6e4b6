-- A file that asks for a log beside it.
PRAGMA journal_mode = WAL;
