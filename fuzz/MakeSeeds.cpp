#include <cstdio>

#include "fuzz/Seeds.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "Usage: %s FOLDER\n", argv[0]);
    return 2;
  }
  Seeds::MakeAll(QString::fromLocal8Bit(argv[1]));
  return 0;
}
