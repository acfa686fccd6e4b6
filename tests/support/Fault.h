#pragma once

#include <QByteArray>
#include <QMap>
#include <functional>
#include <vector>

// A call that an interposer has met.
struct InterposedCall {
  const char* name;  // such as "bind_int" or "rename"
  bool swept;        // whether a fault that names no call counts it
  QByteArray file;   // file that the call works on, as far as it is known
  QByteArray text;   // SQL text that the call works on, if any
};

// One fault: which calls it meets, from which of them on and for how many, and what they report.
// A call that fails is not forwarded to the real function.
class Fault {
 public:
  // `calls` are names joined by '|'. A name also stands for the longer names that it begins up to an
  // underscore: "bind" is every bind. Empty: every call that takes part in sweeps.
  Fault(const QByteArray& calls, int code);
  // Ends the process without any clean-up, exit status `killedStatus`, where others fail.
  static Fault Kill(const QByteArray& calls);
  // Runs `action` before the call, which is forwarded then. The action must not make interposed calls.
  static Fault Before(const QByteArray& calls, const std::function<void()>& action);

  Fault& At(int number);                               // first call that fails; 1 unless said otherwise
  Fault& Times(int number);                            // how many calls in a row; 1 unless said otherwise
  Fault& Always();                                     // that call and all that follow
  Fault& Results(const std::vector<int>& results);     // one result per call, then forwarded again
  Fault& Texts(const std::vector<QByteArray>& texts);  // one text per column_text, then forwarded again
  Fault& OnText(const QByteArray& text);               // only calls whose SQL text contains this
  Fault& OnFile(const QByteArray& text);               // only calls whose file's path contains this
  Fault& Performed();                                  // forwarded first, then reported as failed
  Fault& WithoutOutput();                              // leaves the message or the handle null

  bool IsPerformed() const { return performed_; }
  bool HasOutput() const { return hasOutput_; }
  // The text that the call met last has to return; null without Texts().
  const char* Text() const;

  static constexpr int killedStatus = 42;

 private:
  friend class FaultPlan;
  bool Matches(const InterposedCall& call) const;
  bool Meets(int* code);

  QByteArray calls_;
  std::vector<int> results_;
  std::vector<QByteArray> texts_;
  int at_ = 1;
  int times_ = 1;
  int seen_ = 0;
  bool kills_ = false;
  std::function<void()> action_;
  bool performed_ = false;
  bool hasOutput_ = true;
  QByteArray text_;
  QByteArray file_;
};

// The armed faults of one interposer and the calls that it has counted.
class FaultPlan {
 public:
  void Arm(const Fault& fault) { faults_.push_back(fault); }
  void Clear() { *this = FaultPlan(); }
  // Number of calls that were made to fail.
  int Fired() const { return fired_; }
  // Number of calls counted, `calls` read as by Fault.
  int Count(const QByteArray& calls) const;
  // Counts the call. Returns the fault that it meets and the code to report, or null.
  const Fault* Meet(const InterposedCall& call, int* code);

 private:
  std::vector<Fault> faults_;
  QMap<QByteArray, int> counts_;
  QMap<QByteArray, int> sweptCounts_;
  int fired_ = 0;
};
