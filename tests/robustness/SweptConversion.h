#pragma once

#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <ostream>
#include <string>
#include <vector>

#include "tests/robustness/Scene.h"
#include "tests/support/LogCapture.h"

inline constexpr char scratchFolder[] = "/opt/tarnbeam/database";
inline constexpr char scratchFile[] = "/opt/tarnbeam/database/TemporaryDB.sqlite";

struct Conversion {
  int from;
  bool (*convert)(QString& path);
  // The table whose copy or changes may fail without failing the conversion; null: none.
  const char* uncounted;
  // Whether a failed conversion removes its scratch file and names the step that failed.
  bool clearsAndNames;

  static std::vector<Conversion> All();
};

inline void PrintTo(const Conversion& conversion, std::ostream* out) {
  *out << conversion.from << " to " << conversion.from + 1;
}

inline std::string ConversionName(const testing::TestParamInfo<Conversion>& info) {
  return "Version" + std::to_string(info.param.from) + "To" + std::to_string(info.param.from + 1);
}

#define INSTANTIATE_FOR_CONVERSIONS(fixture) \
  INSTANTIATE_TEST_SUITE_P(All, fixture, testing::ValuesIn(Conversion::All()), ConversionName)

// Runs one conversion again and again on a fresh copy of the golden file of its source version.
class SweptConversion : public testing::TestWithParam<Conversion> {
 protected:
  explicit SweptConversion(const QString& parentFolder = QLatin1String(scratchFolder));

  void SetUp() override { ASSERT_TRUE(QFileInfo(QLatin1String(scratchFolder)).isDir()) << scratchFolder; }

  static void RemoveScratchFile() {
    for (const char* suffix : {"", "-journal"})
      QFile::remove(QLatin1String(scratchFile) + QLatin1String(suffix));
  }

  bool Run() {
    QString path = scene_.Main();
    return GetParam().convert(path);
  }

  const Contents golden_;
  Scene scene_;
  LogCapture log_;
};
