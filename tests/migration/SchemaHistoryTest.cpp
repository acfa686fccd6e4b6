// Files that a store creates beside files that conversions make of older ones.
#include "store/AllStores.h"
#include "tests/migration/ConversionTest.h"

namespace {

template <typename Store>
void CreateBy(const TemporaryFolder& folder) {
  delete Store::Create(folder.Path("new.sqlite"), folder.Thresholds());
}

// By version.
constexpr auto creators =
    AllStores::Table([](auto store) { return &CreateBy<typename decltype(store)::Type>; });

struct Added {
  const char* table;
  const char* column;
  int since;
};
constexpr Added added[] = {
    {"AntennaAlignment", "TiltInversionEnabled", 3},
    {"AntennaAlignment", "Note", 4},
    {"AntennaAlignment", "RollPrecision", 5},
    {"PathAlignment", "TiltInversionEnabled", 3},
    {"PathAlignment", "Note", 7},
    {"Preferences", "AccelerometerCalibrated", 2},
    {"Preferences", "GNSSFileCRC", 2},
    {"Preferences", "TiltIndicatorEnabled", 2},
    {"Preferences", "RollIndicatorEnabled", 2},
    {"Preferences", "TiltInversionEnabled", 3},
    {"Preferences", "BluetoothDisplayName", 3},
    {"Preferences", "Language", 4},
    {"Preferences", "RollPrecision", 5},
    {"Preferences", "GeoidFormat", 6},
    {"Preferences", "UserTechId", 7},
};

// The columns that follow those of version 1.
QStringList AddedColumns(const QString& table, int version) {
  QStringList columns;
  for (const Added& column : added) {
    if (table == column.table && version >= column.since) columns.append(column.column);
  }
  return columns;
}

QStringList Columns(const QString& path, const QString& table, const char* what) {
  return Rows(path, QStringLiteral("SELECT %1 FROM pragma_table_info('%2')").arg(what, table))
      .replaceInStrings("'", "");
}

QStringList References(const QString& path, const QString& table) {
  return Rows(path, QStringLiteral("SELECT \"from\", \"table\", \"to\", on_delete FROM "
                                   "pragma_foreign_key_list('%1') ORDER BY 1")
                        .arg(table))
      .replaceInStrings("'", "");
}

// Of the conversion's source version and the version that it makes.
class SchemaHistoryTest : public ConversionTest {
 protected:
  SchemaHistoryTest() {
    creators[static_cast<std::size_t>(Target() - 1)](folder_);
    EXPECT_TRUE(Convert(Tested(), Main()).result);
  }
  static int Target() { return Tested().source + 1; }
  QString New() const { return folder_.Path("new.sqlite"); }
};
INSTANTIATE_TEST_SUITE_P(Converters, SchemaHistoryTest, testing::ValuesIn(Converters()), NameOf);

TEST_P(SchemaHistoryTest, Columns) {
  for (const CopiedTableTexts& texts : CopiedTables()) {
    SCOPED_TRACE(texts.table);
    const char* const declared = "name, type, \"notnull\", pk";
    EXPECT_EQ(Columns(Main(), texts.table, declared), Columns(New(), texts.table, declared));
    const QStringList names = Columns(New(), texts.table, "name");
    const QStringList expected = AddedColumns(texts.table, Target());
    EXPECT_EQ(names.mid(names.size() - expected.size()), expected);
  }
}

TEST_P(SchemaHistoryTest, Defaults) {
  for (const CopiedTableTexts& texts : CopiedTables()) {
    SCOPED_TRACE(texts.table);
    QStringList converted = Columns(Main(), texts.table, "name, dflt_value");
    if (qstrcmp(texts.table, "Preferences") == 0 && Target() == 2) {
      EXPECT_EQ(converted.removeAll("AccelerometerCalibrated|0"), 1);
      converted.insert(25, "AccelerometerCalibrated|NULL");
    }
    if (qstrcmp(texts.table, "PathAlignment") == 0 && Target() >= 4) {
      EXPECT_EQ(converted.removeAll("TiltInversionEnabled|NULL"), 1);
      converted.insert(11, "TiltInversionEnabled|0");
    }
    EXPECT_EQ(converted, Columns(New(), texts.table, "name, dflt_value"));
  }
}

TEST_P(SchemaHistoryTest, ForeignKeys) {
  const QString height = "SiteHeightKey|Height|HeightKey|";
  QStringList sites{"MeasuredOrientationKey|Orientation|OrientationKey|NO ACTION", height + "CASCADE",
                    "SiteKey|Sites|SiteKey|NO ACTION",
                    "TargetOrientationKey|Orientation|OrientationKey|NO ACTION"};
  QStringList paths{"MeasuredOrientationKey|Orientation|OrientationKey|NO ACTION",
                    "PathKey|Paths|PathKey|NO ACTION", "PathLocationKey|Orientation|OrientationKey|NO ACTION",
                    height + "NO ACTION", "TargetOrientationKey|Orientation|OrientationKey|NO ACTION"};
  if (Target() >= 3) {
    const QString location = "LocationKey|Geolocation|GeolocationKey|NO ACTION";
    sites.prepend(location);
    paths.prepend(location);
    paths.replace(3, "PathLocationKey|Geolocation|GeolocationKey|NO ACTION");
    paths.replace(4, height + "CASCADE");
  }
  EXPECT_EQ(References(New(), "AntennaAlignment"), sites);
  EXPECT_EQ(References(Main(), "AntennaAlignment"), sites);
  EXPECT_EQ(References(New(), "PathAlignment"), paths);
  if (Target() >= 4) paths.replace(4, height + "NO ACTION");
  EXPECT_EQ(References(Main(), "PathAlignment"), paths);
}

TEST_P(SchemaHistoryTest, OtherTablesHaveTheSameText) {
  for (const char* const table : {"Sites", "Paths", "Orientation", "Geolocation", "Height",
                                  "SiteScreenContents", "PathScreenContents", "Version"}) {
    const QString query = QStringLiteral("SELECT sql FROM sqlite_schema WHERE name = '%1'").arg(table);
    EXPECT_EQ(Rows(Main(), query), Rows(New(), query));
    EXPECT_EQ(Rows(New(), query).size(), 1);
  }
}

}  // namespace
