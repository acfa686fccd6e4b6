#pragma once

#include <QCoreApplication>
#include <QString>
#include <memory>

#include "tool/AlignmentFiles.h"

/// Reports on paper: what a rigger hands over. Needs Qt GUI; a program built without it says so.
namespace ReportPdf {

/// The application object, with what drawing needs where --pdf is among the arguments.
std::unique_ptr<QCoreApplication> MakeApplication(int& argc, char** argv);

/// Writes the page into the folder and answers its path. Replaces an earlier one.
QString Write(const Reports& reports, const QString& folder);

}  // namespace ReportPdf
