#include "tests/robustness/EndlessView.h"

#include <QStringList>

#include "tests/support/DatabaseDump.h"

// The table's own rows, if it has any, come again and again. Without CROSS, some engines gather the rows
// without end before they hand out the first.
const std::vector<EndlessView>& EndlessView::All() {
  static const std::vector<EndlessView> views = {
      {"rows without end", "Endless CROSS JOIN %1", true},
      {"a calculation without end", "%1 WHERE (SELECT count(*) FROM Endless) >= 0", false},
  };
  return views;
}

void EndlessView::Replace(const QString& path, const QString& table) const {
  const QString before = table + QStringLiteral("Before");
  RunSql(path,
         QStringLiteral("PRAGMA legacy_alter_table = 1; ALTER TABLE %1 RENAME TO %2").arg(table, before));
  RunSql(path,
         QStringLiteral("CREATE VIEW %1 AS WITH RECURSIVE Endless (number) AS (SELECT 1 UNION ALL SELECT "
                        "number + 1 FROM Endless) SELECT %2.* FROM %3")
             .arg(table, before, QString::fromLatin1(from).arg(before)));
}
