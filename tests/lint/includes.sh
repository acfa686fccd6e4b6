#!/bin/bash
# scripts/check-includes, over small trees: includes along the arrows pass, and any other is found and named.
set -euo pipefail
check=$1
work=$(mktemp -d)
trap 'rm -r "$work"' EXIT
status=0
wrong() { printf 'FAILED: %s\n' "$*" >&2; status=1; }

# answer_to FILE INCLUDE-LINE: what is said of a tree with that file alone; empty if nothing is.
answer_to() {
  rm -rf "$work/tree"
  mkdir -p "$(dirname "$work/tree/$1")"
  printf '#pragma once\n%s\n' "$2" >"$work/tree/$1"
  if "$check" "$work/tree"; then echo "status 0"; else echo "status $?"; fi
}
passes() {
  local answer
  answer=$(answer_to "$1" "$2")
  [ "$answer" = "status 0" ] || wrong "$1 with $2: $answer"
}
# fails FILE INCLUDE-LINE INCLUDED
fails() {
  local answer expected
  expected=$(printf '%s:2: %s may not include %s\nstatus 1' "$1" "$(dirname "$1")" "$3")
  answer=$(answer_to "$1" "$2")
  [ "$answer" = "$expected" ] || wrong "$1 with $2: $answer"
}

passes core/Sql.h '#include <QString>'
passes core/Sql.h '#include <sys/stat.h>'
passes core/Sql.h '#include "core/Statement.h"'
passes core/AlignmentDatabase.h '#include "store/IAlignmentDatabaseInternal.h"'
passes store/StoreSaving.cpp '#include "schema/SchemaTexts.h"'
passes store/AllStores.h '#include "store/legacy/AlignmentDatabaseVersion1.h"'
passes store/legacy/AlignmentDatabaseVersion1.h '#include "store/AlignmentDatabaseStore.h"'
passes model/Height.h '#include "TarnbeamDatabaseExport.h"'
passes tool/commands/List.cpp '#include "tool/pair/AlignmentFiles.h"'
passes tool/commands/List.cpp '#include "tool/formats/ReportPrinter.h"'
passes tool/pair/FileCheck.cpp '#include "tool/Console.h"'
passes tool/main.cpp '#include "tool/commands/Commands.h"'

for file in core/Sql.h core/AlignmentDatabase.cpp; do
  fails $file '#include "store/IAlignmentDatabaseInternal.h"' store/IAlignmentDatabaseInternal.h
done
fails core/Sql.h '  #  include <store/AllStores.h>' store/AllStores.h
fails core/Sql.h '#include "migration/Conversion.h"' migration/Conversion.h
fails model/Height.cpp '#include "core/DebugLog.h"' core/DebugLog.h
fails schema/SchemaTexts.h '#include "model/Height.h"' model/Height.h
fails store/StoreSaving.cpp '#include "store/legacy/AlignmentDatabaseVersion1.h"' store/legacy/AlignmentDatabaseVersion1.h
fails migration/Conversion.cpp '#include "store/AllStores.h"' store/AllStores.h
fails reports/PdfReportData.h '#include "store/AllStores.h"' store/AllStores.h
fails tool/pair/FileCheck.cpp '#include "tool/formats/ReportPdf.h"' tool/formats/ReportPdf.h
fails tool/formats/ReportPdf.h '#include "tool/pair/AlignmentFiles.h"' tool/pair/AlignmentFiles.h
fails tool/pair/FileCheck.cpp '#include "tool/commands/Commands.h"' tool/commands/Commands.h
fails tool/Console.h '#include "tool/commands/Commands.h"' tool/commands/Commands.h
fails tool/pair/FileCheck.cpp '#include "schema/SchemaTexts.h"' schema/SchemaTexts.h
fails core/Sql.h '#include "tests/support/Fault.h"' tests/support/Fault.h
fails core/Sql.h '#include "Statement.h"' Statement.h
fails core/Sql.h '#include "../model/Height.h"' ../model/Height.h
fails core/deeper/Sql.h '#include "core/Statement.h"' core/Statement.h
exit $status
