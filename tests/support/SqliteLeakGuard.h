#pragma once

// Watches every test of the program (installed by its main function): at the end of each test the connections
// and statements left open are compared with what the test has announced; anything else makes the test fail.
// Then they are closed, and all interposers are put back to plain forwarding.
class SqliteLeakGuard {
 public:
  SqliteLeakGuard() = delete;

  static void Install();
  // Announces what the running test leaves open, exactly.
  static void ExpectLeaked(int connections, int statements);
  // The comparison itself; empty when what is open is what was announced.
  static const char* Complaint();
};
