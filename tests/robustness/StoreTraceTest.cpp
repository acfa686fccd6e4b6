// Every operation of every store makes the calls and writes the lines that are recorded, to the letter: on
// success, and with each of its calls failing once.
#include "tests/robustness/GoldenTrace.h"
#include "tests/robustness/StoreOperations.h"

namespace {

// Returns a store whatever happens.
QString Create(const StoreVersion& version, const QString& main, const QString& thresholds) {
  version.create(main, thresholds);
  return QStringLiteral("store");
}

std::vector<StoreOperation> Traced() {
  std::vector<StoreOperation> operations = StoreOperation::All();
  operations.push_back({"Create", Kind::Creates, &Create, nullptr});
  operations.push_back({"CreateOnExistingFiles", Kind::Writes, &Create, nullptr});
  return operations;
}

std::string OperationName(const testing::TestParamInfo<StoreOperation>& operation) {
  return operation.param.name;
}

class StoreTrace : public testing::TestWithParam<StoreOperation> {};

QString TraceOnVersion(const StoreOperation& operation, const StoreVersion& version) {
  Scene scene(StartOf(operation, version));
  const auto run = [&] {
    scene.Restore();
    return operation.run(version, scene.Main(), scene.Thresholds());
  };
  return TraceOf(
      {run,
       {{scene.Main(), QStringLiteral("MAIN")}, {scene.Thresholds(), QStringLiteral("THRESHOLDS")}},
       [&](const QString& call) { return operation.NeverReturnsWithout(call); }});
}

TEST_P(StoreTrace, IsAsRecorded) {
  GoldenTraces golden(QLatin1String(GetParam().name));
  for (const StoreVersion& version : StoreVersion::All()) {
    golden.Add(QStringLiteral("version %1").arg(version.number), TraceOnVersion(GetParam(), version));
  }
  golden.ExpectAsRecorded();
}

INSTANTIATE_TEST_SUITE_P(All, StoreTrace, testing::ValuesIn(Traced()), OperationName);

}  // namespace
