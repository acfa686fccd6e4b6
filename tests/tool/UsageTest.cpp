// Arguments, help, exit status.
#include "tests/tool/ToolTest.h"

namespace {

struct Misuse {
  QStringList words;
  const char* message;
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
  const char* usage;
};

class HelpTest : public ToolTest, public testing::WithParamInterface<Help> {};

TEST_P(HelpTest, NamesOperandsAndOptions) {
  const QString command = GetParam().command;
  const QString text = RunWell({command, "--help"});
  EXPECT_EQ(text.section('\n', 0, 0), QString("Usage: tarnbeam-db %1").arg(GetParam().usage));
  EXPECT_TRUE(text.contains("\n  --verbose ")) << text.toStdString();
  EXPECT_EQ(text.contains("  --site <ID> "), command == "report" || command == "delete");
  EXPECT_TRUE(RunWell({"--help"}).contains("\n  " + command + " "));
}

INSTANTIATE_TEST_SUITE_P(
    Usage, HelpTest,
    testing::Values(Help{"create", "create MAIN THRESHOLDS [options]"},
                    Help{"import", "import MAIN THRESHOLDS FILE.json [options]"},
                    Help{"list", "list MAIN [THRESHOLDS] [options]"},
                    Help{"report", "report MAIN [THRESHOLDS] [options]"},
                    Help{"delete", "delete MAIN THRESHOLDS [options]"},
                    Help{"version", "version MAIN [options]"},
                    Help{"migrate", "migrate MAIN [THRESHOLDS] [options]"},
                    Help{"check", "check MAIN [THRESHOLDS] [options]"},
                    Help{"merge",
                         "merge MAIN THRESHOLDS SOURCE_MAIN [SOURCE_THRESHOLDS] ... "
                         "[options]"},
                    Help{"diff", "diff MAIN [THRESHOLDS] OTHER_MAIN [OTHER_THRESHOLDS] [options]"},
                    Help{"export", "export MAIN [THRESHOLDS] [options]"},
                    Help{"backup", "backup MAIN [THRESHOLDS] FOLDER [options]"},
                    Help{"restore", "restore FOLDER MAIN [THRESHOLDS] [options]"},
                    Help{"repair", "repair MAIN THRESHOLDS [options]"},
                    Help{"salvage", "salvage MAIN [THRESHOLDS] NEW_MAIN NEW_THRESHOLDS [options]"},
                    Help{"preferences", "preferences MAIN [THRESHOLDS] [options]"}));

using UsageTest = ToolTest;

TEST_F(UsageTest, VersionOfTheProgram) {
  EXPECT_EQ(RunWell({"--version"}), "tarnbeam-db " TARNBEAM_VERSION "\n");
}

}  // namespace
