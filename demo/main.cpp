// demo SOURCE [--trace]: tells the stories on a copy of the factory's database; SOURCE is the descriptor of
// its data source.
#include <fcntl.h>
#include <io.h>
#include <objbase.h>

#include <cstdio>

#include "com/ComError.h"
#include "com/Text.h"
#include "demo/Stories.h"

int main(int argc, char** argv) {
  _setmode(_fileno(stdout), _O_BINARY);
  const bool trace = argc == 3 && std::string(argv[2]) == "--trace";
  if (argc != 2 && !trace) {
    std::fputs("usage: demo SOURCE [--trace]\n", stderr);
    return 2;
  }
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  int status = 0;
  try {
    demo::Stage stage(com::FromUtf8(argv[1]), trace);
    demo::TellSaveStory(stage);
    demo::TellAuditStory(stage);
    demo::TellEcnStory(stage);
    demo::TellCustBomStory(stage);
    demo::TellBrowseStory(stage);
  } catch (const com::ComError& error) {
    const std::string text = com::ToUtf8(error.source() + L": " + error.description());
    std::fprintf(stderr, "The demo failed: 0x%08lX %s\n", static_cast<unsigned long>(error.code()),
                 text.c_str());
    status = 1;
  }
  CoUninitialize();
  return status;
}
