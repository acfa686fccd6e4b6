// Arguments, help, exit status.
#include <QRegularExpression>

#include "tests/tool/ToolTest.h"

namespace {

const char* const noMoment =
    " must be a date such as 2024-05-14, or a date and time such as 2024-05-14T09:12:33+02:00";
const char* const noSeparator = "--separator must be one character, and no quote or line end";
const char* const noRay = "--ray must be a number of metres above 0, at most 20000000";

struct Misuse {
  QStringList words;
  QString message;
};

class WrongUsageTest : public ToolTest, public testing::WithParamInterface<Misuse> {};

TEST_P(WrongUsageTest, IsSaidAndTouchesNothing) {
  ExpectFailure(GetParam().words, GetParam().message + hint, 2);
  EXPECT_EQ(FilesInFolder(), QStringList());
}

INSTANTIATE_TEST_SUITE_P(
    Usage, WrongUsageTest,
    testing::Values(
        Misuse{{}, "a command has to be given"}, Misuse{{"crate"}, "there is no command crate"},
        Misuse{{"create"}, "MAIN is missing"}, Misuse{{"create", "m"}, "THRESHOLDS is missing"},
        Misuse{{"create", "m", "t", "x"}, "x is one too many"},
        Misuse{{"import", "m", "t"}, "FILE.json is missing"}, Misuse{{"list"}, "MAIN is missing"},
        Misuse{{"check"}, "MAIN is missing"}, Misuse{{"merge", "m", "t"}, "SOURCE_MAIN is missing"},
        Misuse{{"diff", "m"}, "OTHER_MAIN is missing"},
        Misuse{{"diff", "m", "t", "om", "ot", "x"}, "x is one too many"},
        Misuse{{"diff", "m", "t", "om", "ot", "--format", "xml"}, "--format must be table, json or csv"},
        Misuse{{"list", "m", "t", "--wait", "soon"},
               "--wait must be a whole number of seconds, at most 86400"},
        Misuse{{"list", "m", "t", "--wait=-1"}, "--wait must be a whole number of seconds, at most 86400"},
        Misuse{{"check", "m", "t", "x"}, "x is one too many"}, Misuse{{"version"}, "MAIN is missing"},
        Misuse{{"migrate", "m", "t", "b"}, "b is one too many"},
        Misuse{{"migrate", "m", "--backup"}, "Missing value after '--backup'."},
        Misuse{{"backup"}, "MAIN is missing"}, Misuse{{"backup", "m"}, "FOLDER is missing"},
        Misuse{{"backup", "m", "t", "b", "x"}, "x is one too many"}, Misuse{{"restore"}, "FOLDER is missing"},
        Misuse{{"restore", "b"}, "MAIN is missing"},
        Misuse{{"restore", "b", "m", "t", "x"}, "x is one too many"}, Misuse{{"export"}, "MAIN is missing"},
        Misuse{{"preferences"}, "MAIN is missing"}, Misuse{{"repair", "m"}, "THRESHOLDS is missing"},
        Misuse{{"salvage"}, "MAIN is missing"}, Misuse{{"salvage", "m", "nm"}, "NEW_THRESHOLDS is missing"},
        Misuse{{"salvage", "m", "t", "nm", "nt", "x"}, "x is one too many"},
        Misuse{{"list", "m", "t", "--site", "S"}, "Unknown option 'site'."},
        Misuse{{"report", "m", "t"}, "--site, --path or --all has to be given"},
        Misuse{{"report", "m", "t", "--site", "S", "--path", "P"}, "either --site or --path has to be given"},
        Misuse{{"report", "m", "t", "--site", "S", "--format", "xml"}, "--format must be table, json or csv"},
        Misuse{{"report", "m", "t", "--site", "S", "--format", "csv", "--pdf", "."},
               "--format and --pdf exclude each other"},
        Misuse{{"report", "m", "t", "--all", "--site", "A"}, "--all goes with neither --site nor --path"},
        Misuse{{"report", "m", "t", "--all", "--title", "x"}, "--title goes with --pdf alone"},
        Misuse{{"report", "m", "t", "--all", "--time-zone", "UTC"}, "--time-zone goes with --pdf alone"},
        Misuse{{"report", "m", "t", "--all", "--pdf", ".", "--time-zone", "Mars"},
               "--time-zone must be the name of a time zone, such as Europe/Oslo"},
        Misuse{{"list", "m", "t", "--since", "yesterday"}, QString("--since") + noMoment},
        Misuse{{"export", "m", "t", "--until", "2024"}, QString("--until") + noMoment},
        Misuse{{"list", "m", "t", "--format", "csv", "--separator", ""}, noSeparator},
        Misuse{{"list", "m", "t", "--format", "csv", "--separator", "ab"}, noSeparator},
        Misuse{{"list", "m", "t", "--format", "csv", "--separator", "\""}, noSeparator},
        Misuse{{"list", "m", "t", "--bom"}, "--bom goes with --format csv alone"},
        Misuse{{"list", "m", "t", "--format", "json", "--separator", ";"},
               "--separator goes with --format csv alone"},
        Misuse{{"list", "m", "t", "--format", "ndjson"}, "--format must be table, json or csv"},
        Misuse{{"export", "m", "t", "--format", "table"}, "--format must be json, ndjson or csv"},
        Misuse{{"check", "m", "t", "--format", "csv"}, "--format must be table or json"},
        Misuse{{"preferences", "m", "t", "--format", "csv"}, "--format must be table or json"},
        Misuse{{"version", "m", "--format", "csv"}, "--format must be table or json"},
        Misuse{{"map", "m", "t"}, "--format must be geojson or kml"},
        Misuse{{"map", "m", "t", "--format", "kml", "--ray", "0"}, noRay},
        Misuse{{"map", "m", "t", "--format", "kml", "--ray", "20000001"}, noRay},
        Misuse{{"map", "m", "t", "--format", "kml", "--ray", "nan"}, noRay},
        Misuse{{"delete", "m", "t"}, "either --site or --path has to be given"},
        Misuse{{"delete", "m", "t", "--site", "S", "--index", "one"}, "--index must be a number from 0"},
        Misuse{{"delete", "m", "t", "--site", "S", "--index=-1"}, "--index must be a number from 0"},
        // A variable of a script that was never set.
        Misuse{{"list", ""}, "operand 1 is empty"}, Misuse{{"restore", "b", "m", ""}, "operand 3 is empty"},
        Misuse{{"import", "m", "", "in.json"}, "operand 2 is empty"},
        Misuse{{"migrate", "m", "--backup", ""}, "--backup must name a file"},
        Misuse{{"list", "m", "t", "--\x1b[31mred"}, "Unknown option '\\x1b[31mred'."}));

struct Help {
  const char* command;
  const char* operands;
  // With what they take, and besides those that every command has.
  QStringList options;
};

const QStringList filters{"failed", "latest", "sector <NAME>", "since <TIME>", "until <TIME>"};
const QStringList csv{"bom", "format <FORMAT>", "separator <CHAR>"};

const std::vector<Help>& Helps() {
  static const std::vector<Help> helps{
      {"create", "MAIN THRESHOLDS", {}},
      {"import", "MAIN THRESHOLDS FILE.json", {"skip-existing"}},
      {"list", "MAIN [THRESHOLDS]", filters + csv},
      {"report", "MAIN [THRESHOLDS]",
       filters + csv +
           QStringList{"site <ID>", "path <ID>", "all", "pdf <FOLDER>", "title <TEXT>", "time-zone <ID>"}},
      {"export", "MAIN [THRESHOLDS]", filters + csv},
      {"map", "MAIN [THRESHOLDS]", filters + QStringList{"format <FORMAT>", "ray <METRES>"}},
      {"delete", "MAIN THRESHOLDS", {"site <ID>", "path <ID>", "index <N>", "yes"}},
      {"merge", "MAIN THRESHOLDS SOURCE_MAIN [SOURCE_THRESHOLDS] ...", {"dry-run"}},
      {"diff", "MAIN [THRESHOLDS] OTHER_MAIN [OTHER_THRESHOLDS]", csv},
      {"backup", "MAIN [THRESHOLDS] FOLDER", {}},
      {"restore", "FOLDER MAIN [THRESHOLDS]", {"yes"}},
      {"check", "MAIN [THRESHOLDS]", {"strict", "format <FORMAT>"}},
      {"repair", "MAIN THRESHOLDS", {"dry-run"}},
      {"salvage", "MAIN [THRESHOLDS] NEW_MAIN NEW_THRESHOLDS", {}},
      {"version", "MAIN", {"format <FORMAT>"}},
      {"migrate", "MAIN [THRESHOLDS]", {"backup <FILE>", "accept-losses"}},
      {"preferences", "MAIN [THRESHOLDS]", {"format <FORMAT>"}}};
  return helps;
}

// What a text names where lines begin so, sorted.
QStringList NamedIn(const QString& text, const char* pattern) {
  QStringList names;
  const QRegularExpression line(pattern, QRegularExpression::MultilineOption);
  for (auto found = line.globalMatch(text); found.hasNext();) names.append(found.next().captured(1));
  names.sort();
  return names;
}

class HelpTest : public ToolTest, public testing::WithParamInterface<Help> {};

TEST_P(HelpTest, NamesOperandsAndOptions) {
  const Help& help = GetParam();
  const QString text = RunWell({help.command, "--help"});
  EXPECT_EQ(text.section('\n', 0, 0),
            QString("Usage: tarnbeam-db %1 %2 [options]").arg(help.command, help.operands));
  QStringList options = help.options + QStringList{"help", "verbose", "wait <SECONDS>"};
  options.sort();
  EXPECT_EQ(NamedIn(text, "^  (?:-[a-z], )?--([a-z-]+(?: <[A-Z]+>)?)  "), options);
}

INSTANTIATE_TEST_SUITE_P(Usage, HelpTest, testing::ValuesIn(Helps()),
                         [](const testing::TestParamInfo<Help>& test) { return test.param.command; });

using UsageTest = ToolTest;

TEST_F(UsageTest, TheOverviewNamesEveryCommand) {
  QStringList commands;
  for (const Help& help : Helps()) commands.append(help.command);
  commands.sort();
  EXPECT_EQ(NamedIn(RunWell({"--help"}), "^  ([a-z]+) "), commands);
}

TEST_F(UsageTest, VersionOfTheProgram) {
  EXPECT_EQ(RunWell({"--version"}), "tarnbeam-db " TARNBEAM_VERSION "\n");
}

}  // namespace
