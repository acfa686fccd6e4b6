#include "tool/formats/AlignmentFilter.h"

#include <QRegularExpression>
#include <algorithm>
#include <iterator>

std::vector<Alignment> AlignmentFilter::Apply(const std::vector<Alignment>& alignments) const {
  std::vector<Alignment> left;
  std::copy_if(alignments.begin(), alignments.end(), std::back_inserter(left), [this](const Alignment& a) {
    return (!since || a.time >= *since) && (!until || a.time < *until) &&
           (!sector || (a.kind == Kind::Site && a.sector == *sector));
  });
  if (latest) left = LatestOfEach(left);
  if (failed) {
    const auto passes = [](const Alignment& a) { return VerdictOf(a) != Verdict::Fail; };
    left.erase(std::remove_if(left.begin(), left.end(), passes), left.end());
  }
  return left;
}

std::optional<QDateTime> ReadMoment(const QString& text, bool pastDate) {
  // Qt accepts more than ISO 8601, and stops where it no longer understands the text.
  static const QRegularExpression Form(
      QStringLiteral("^(\\d{4}-\\d\\d-\\d\\d)(?:[T ](\\d\\d:\\d\\d)(:\\d\\d(?:\\.\\d{1,3})?)?"
                     "(Z|[+-]\\d\\d:?\\d\\d)?)?\\z"));
  const QRegularExpressionMatch match = Form.match(text);
  if (!match.hasMatch()) return {};
  const auto part = [&match](int number, const char* otherwise) {
    return match.captured(number).isEmpty() ? QString::fromLatin1(otherwise) : match.captured(number);
  };
  const QDateTime moment = QDateTime::fromString(
      match.captured(1) + QLatin1Char('T') + part(2, "00:00") + part(3, ":00") + part(4, "Z"),
      Qt::ISODateWithMs);
  if (!moment.isValid()) return {};
  const bool isDateAlone = match.captured(2).isEmpty();
  return pastDate && isDateAlone ? moment.addDays(1) : moment;
}
