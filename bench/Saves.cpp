// saves FILE.json MAIN THRESHOLDS: saves the alignments through the library alone, into new files, and prints
// how long that took in seconds: by the clock, and of the processor's time.
#include <QCoreApplication>
#include <QElapsedTimer>
#include <ctime>
#include <iostream>
#include <memory>

#include "store/AllStores.h"
#include "tool/formats/AlignmentJson.h"

int main(int count, char** arguments) {
  const QCoreApplication application(count, arguments);
  qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
  const QStringList words = QCoreApplication::arguments();
  const std::vector<Alignment> alignments = AlignmentJson::ReadFile(words.at(1));
  const std::unique_ptr<CurrentStore> store(CurrentStore::Create(words.at(2), words.at(3)));
  QElapsedTimer timer;
  timer.start();
  const std::clock_t before = std::clock();
  for (const Alignment& alignment : alignments) {
    if (!Save(store.get(), alignment)) return 1;
  }
  constexpr double nanoseconds = 1e9;
  std::cout << static_cast<double>(timer.nsecsElapsed()) / nanoseconds << ' '
            << static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC << '\n';
  return 0;
}
