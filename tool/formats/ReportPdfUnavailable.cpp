// Takes the place of ReportPdf.cpp if there is no Qt GUI to draw with.
#include "tool/Console.h"
#include "tool/formats/ReportPdf.h"

namespace ReportPdf {

std::unique_ptr<QCoreApplication> MakeApplication(int& argc, char** argv) {
  return std::make_unique<QCoreApplication>(argc, argv);
}

Writer::Writer(const QString& /*folder*/, const Head& /*head*/) {
  throw Failure(QStringLiteral("this program was built without Qt GUI, so it cannot write PDF"));
}

QString Writer::Write(const Reports& /*reports*/) { return {}; }

}  // namespace ReportPdf
