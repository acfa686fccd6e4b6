// Stands for ReportPdf.cpp where Qt GUI is not there to draw with.
#include "tool/Console.h"
#include "tool/ReportPdf.h"

namespace ReportPdf {

std::unique_ptr<QCoreApplication> MakeApplication(int& argc, char** argv) {
  return std::make_unique<QCoreApplication>(argc, argv);
}

QString Write(const Reports& /*reports*/, const QString& /*folder*/) {
  throw Failure(QStringLiteral("this program was built without Qt GUI, so it cannot write PDF"));
}

}  // namespace ReportPdf
