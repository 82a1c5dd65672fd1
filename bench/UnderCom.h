// What the main function of a benchmark under Wine does around its rows.
#pragma once

#include <objbase.h>

#include <cstdio>
#include <exception>
#include <string>

#include "com/Text.h"

namespace bench {

// Runs `work` in an apartment, with the folder in which it may make databases: the program's last argument,
// or build/bench. The program has so many arguments before that. Returns the process's exit code.
template <class Work>
int UnderCom(int argc, char** argv, int arguments, const Work& work) {
  if (argc < 1 + arguments || argc > 2 + arguments) {
    std::fprintf(stderr, "%s: as many arguments as its source says\n", argv[0]);
    return 2;
  }
  const std::wstring folder = argc == 2 + arguments ? com::FromUtf8(argv[argc - 1]) : L"build\\bench";
  CreateDirectoryW(folder.c_str(), nullptr);
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  int status = 0;
  try {
    work(folder);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
    status = 2;
  }
  CoUninitialize();
  return status;
}

} // namespace bench
