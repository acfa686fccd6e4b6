#pragma once

#include <QByteArray>
#include <functional>

// A power cut, simulated in a child process. What the process changes in files goes through FileCalls; from
// Begin() on the contents that each file had when it was last synced are kept, and the names that were made,
// removed or replaced since their folder was last synced. When the power fails, some of that is taken back.
// What was synced always stays.
class PowerCut {
 public:
  // What becomes of names in folders that are not synced, and of contents that are not. Torn: every second
  // sector of those that differ is the new one, and the first of them is half new and half old.
  enum class Names { Kept, Undone };
  enum class Data { Kept, Torn, Dropped };
  struct Loss {
    Names names;
    Data data;
  };
  static constexpr Loss losses[] = {{Names::Kept, Data::Dropped},
                                    {Names::Undone, Data::Dropped},
                                    {Names::Kept, Data::Torn},
                                    {Names::Undone, Data::Torn},
                                    {Names::Undone, Data::Kept}};

  PowerCut() = delete;

  // Runs `work` in a child process until the power fails: before its file call `number`, counted as by a
  // Fault that names none, or, for 0, when `work` has returned true. Returns the child's exit status:
  // Fault::killedStatus if the power failed. Syncs of paths that contain `ignoredSyncs`, if that is not
  // empty, do nothing.
  static int RunUntil(int number, const Loss& loss, const std::function<bool()>& work,
                      const QByteArray& ignoredSyncs = {});

  // What FileCalls tells before it forwards a call.
  static void Before(const char* name, int descriptor);
  static void Before(const char* name, const char* path);
  static void Before(const char* name, const char* from, const char* to);
};
