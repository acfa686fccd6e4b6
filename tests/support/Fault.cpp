#include "tests/support/Fault.h"

#include <QList>
#include <algorithm>

#include "tests/support/ChildProcess.h"

namespace {

bool NameMatches(const QByteArray& calls, const QByteArray& name) {
  const QList<QByteArray> names = calls.split('|');
  return std::any_of(names.begin(), names.end(), [&](const QByteArray& wanted) {
    return name == wanted || name.startsWith(wanted + '_');
  });
}

}  // namespace

Fault::Fault(const QByteArray& calls, int code) : calls_(calls), results_{code} {}

Fault Fault::Kill(const QByteArray& calls) {
  Fault fault(calls, 0);
  fault.kills_ = true;
  return fault;
}

Fault Fault::Before(const QByteArray& calls, const std::function<void()>& action) {
  Fault fault(calls, 0);
  fault.action_ = action;
  return fault;
}

Fault& Fault::At(int number) {
  at_ = number;
  return *this;
}

Fault& Fault::Times(int number) {
  times_ = number;
  return *this;
}

Fault& Fault::Always() { return Times(-1); }

Fault& Fault::Results(const std::vector<int>& results) {
  results_ = results;
  return Times(static_cast<int>(results.size()));
}

Fault& Fault::Texts(const std::vector<QByteArray>& texts) {
  texts_ = texts;
  return Times(static_cast<int>(texts.size()));
}

const char* Fault::Text() const {
  return texts_.empty() ? nullptr : texts_[static_cast<std::size_t>(seen_ - at_)].constData();
}

Fault& Fault::OnText(const QByteArray& text) {
  text_ = text;
  return *this;
}

Fault& Fault::OnFile(const QByteArray& text) {
  file_ = text;
  return *this;
}

Fault& Fault::Performed() {
  performed_ = true;
  return *this;
}

Fault& Fault::WithoutOutput() {
  hasOutput_ = false;
  return *this;
}

bool Fault::Matches(const InterposedCall& call) const {
  const bool named = calls_.isEmpty() ? call.swept : NameMatches(calls_, call.name);
  return named && call.text.contains(text_) && call.file.contains(file_);
}

bool Fault::Meets(int* code) {
  const int position = ++seen_ - at_;
  if (position < 0 || (times_ >= 0 && position >= times_)) return false;
  *code = results_[std::min(static_cast<std::size_t>(position), results_.size() - 1)];
  return true;
}

int FaultPlan::Count(const QByteArray& calls) const {
  int count = 0;
  const QMap<QByteArray, int>& counts = calls.isEmpty() ? sweptCounts_ : counts_;
  for (auto entry = counts.begin(); entry != counts.end(); ++entry) {
    if (calls.isEmpty() || NameMatches(calls, entry.key())) count += entry.value();
  }
  return count;
}

const Fault* FaultPlan::Meet(const InterposedCall& call, int* code) {
  ++counts_[call.name];
  if (call.swept) ++sweptCounts_[call.name];
  const Fault* met = nullptr;
  for (Fault& fault : faults_) {
    int own = 0;
    if (!fault.Matches(call) || !fault.Meets(&own) || met) continue;
    if (fault.kills_) LeaveProcess(Fault::killedStatus);
    if (fault.action_) {
      fault.action_();
      continue;
    }
    met = &fault;
    *code = own;
    ++fired_;
  }
  return met;
}
