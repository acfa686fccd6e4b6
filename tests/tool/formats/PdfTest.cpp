#include <gtest/gtest.h>
#include <sys/resource.h>

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <csignal>

#include "tests/support/PrintQt.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tool/formats/Samples.h"
#include "tool/Console.h"
#include "tool/formats/ReportPdf.h"

// Qt's own at the end of a GUI application: its platform without a display is never freed.
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options() {
  return "fast_unwind_on_malloc=0";
}
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
  return "leak:QGuiApplicationPrivate::createPlatformIntegration\n";
}

namespace {

class PdfTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    static int count = 2;
    static char program[] = "pdf_tests";
    static char option[] = "--pdf";
    static char* words[] = {program, option, nullptr};
    static const std::unique_ptr<QCoreApplication> application = ReportPdf::MakeApplication(count, words);
    ASSERT_NE(qobject_cast<QGuiApplication*>(application.get()), nullptr);
  }

  QByteArray Read(const QString& name) {
    QFile file(folder_.Path(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
    return file.readAll();
  }
  QStringList Files() const {
    return QDir(folder_.Folder())
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
  }

  TemporaryFolder folder_;
};

Reports Named(const char* pdfName, const Alignment& alignment = SampleSite()) {
  Reports reports = ReportsOf({alignment});
  reports.pdfName = QString::fromUtf8(pdfName);
  return reports;
}

TEST_F(PdfTest, AFileIsWritten) {
  ReportPdf::Writer writer(folder_.Folder(), {});
  EXPECT_EQ(writer.Write(Named("a.pdf")), folder_.Folder() + "/a.pdf");
  EXPECT_TRUE(Read("a.pdf").startsWith("%PDF-"));
  EXPECT_TRUE(Read("a.pdf").trimmed().endsWith("%%EOF"));
  EXPECT_EQ(Files(), QStringList{"a.pdf"});
}

TEST_F(PdfTest, NoTwoReportsGoIntoOneFile) {
  ReportPdf::Writer writer(folder_.Folder(), {});
  for (const char* name : {"a/b.pdf", "a_b.pdf", "a_b.pdf", "c\x1b[2J\n.pdf"}) writer.Write(Named(name));
  EXPECT_EQ(Files(), (QStringList{"a_b-2.pdf", "a_b-3.pdf", "a_b.pdf", "c\\x1b[2J\\n.pdf"}));
}

TEST_F(PdfTest, AnEarlierFileIsReplaced) {
  QFile earlier(folder_.Path("a.pdf"));
  ASSERT_TRUE(earlier.open(QIODevice::WriteOnly));
  earlier.write("earlier");
  earlier.close();
  ReportPdf::Writer(folder_.Folder(), {}).Write(Named("a.pdf"));
  EXPECT_TRUE(Read("a.pdf").startsWith("%PDF-"));
}

// Lets no file grow beyond this size, as a full disk would.
class SmallDisk {
 public:
  explicit SmallDisk(rlim_t bytes) {
    std::signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit small{bytes, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
  }
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;
  ~SmallDisk() { setrlimit(RLIMIT_FSIZE, &before_); }

 private:
  rlimit before_{};
};

TEST_F(PdfTest, OnAFullDiskAnEarlierFileStays) {
  ReportPdf::Writer writer(folder_.Folder(), {});
  writer.Write(Named("a.pdf"));
  const QByteArray earlier = Read("a.pdf");
  for (const rlim_t bytes : {rlim_t{0}, rlim_t{1}, rlim_t{4096}, static_cast<rlim_t>(earlier.size()) - 1}) {
    const SmallDisk disk(bytes);
    EXPECT_THROW(ReportPdf::Writer(folder_.Folder(), {}).Write(Named("a.pdf")), Failure) << bytes;
    EXPECT_EQ(Files(), QStringList{"a.pdf"}) << bytes;
  }
  EXPECT_EQ(Read("a.pdf"), earlier);
}

TEST_F(PdfTest, ThereHasToBeAFolder) {
  EXPECT_THROW(ReportPdf::Writer(folder_.Path("none"), {}), Failure);
  EXPECT_THROW(ReportPdf::Writer(QStringLiteral("/proc"), {}).Write(Named("a.pdf")), Failure);
}

TEST_F(PdfTest, ALongNoteGoesOnOnFurtherPages) {
  Alignment alignment = SampleSite();
  alignment.note = QStringLiteral("word ").repeated(20000);
  ReportPdf::Writer(folder_.Folder(), {}).Write(Named("a.pdf", alignment));
  // 100 000 characters, of which between 3 000 and 12 000 fit on a page.
  const auto pages = Read("a.pdf").count("/Type /Page\n");
  EXPECT_GE(pages, 9);
  EXPECT_LE(pages, 34);
}

}  // namespace
