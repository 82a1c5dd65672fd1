// demo SOURCE [--trace] [--story N]: tells the stories, or the Nth of them, on a copy of the factory's
// database; SOURCE is the descriptor of its data source.
#include <fcntl.h>
#include <io.h>
#include <objbase.h>

#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <optional>
#include <string_view>

#include "com/ComError.h"
#include "com/Text.h"
#include "demo/Stories.h"

namespace {

using Story = void (*)(demo::Stage&);
constexpr Story kStories[] = {demo::TellSaveStory, demo::TellAuditStory, demo::TellEcnStory,
                              demo::TellCustBomStory, demo::TellBrowseStory};

struct Options {
  bool trace = false;
  size_t story = 0; // from 1; 0 for all
};

// Nothing when they are wrong.
std::optional<Options> OptionsIn(int argc, char** argv) {
  if (argc < 2) return std::nullopt;
  Options options;
  for (int i = 2; i < argc; ++i) {
    const std::string_view option = argv[i];
    if (option == "--trace") {
      options.trace = true;
    } else if (option == "--story" && i + 1 < argc) {
      options.story = std::strtoul(argv[++i], nullptr, 10);
      if (options.story < 1 || options.story > std::size(kStories)) return std::nullopt;
    } else {
      return std::nullopt;
    }
  }
  return options;
}

} // namespace

int main(int argc, char** argv) {
  _setmode(_fileno(stdout), _O_BINARY);
  const std::optional<Options> options = OptionsIn(argc, argv);
  if (!options) {
    std::fprintf(stderr, "usage: demo SOURCE [--trace] [--story 1..%zu]\n", std::size(kStories));
    return 2;
  }
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  int status = 0;
  try {
    demo::Stage stage(com::FromUtf8(argv[1]), options->trace);
    for (size_t i = 0; i < std::size(kStories); ++i)
      if (options->story == 0 || options->story == i + 1) kStories[i](stage);
  } catch (const com::ComError& error) {
    const std::string text = com::ToUtf8(error.source() + L": " + error.description());
    std::fprintf(stderr, "The demo failed: 0x%08lX %s\n", static_cast<unsigned long>(error.code()),
                 text.c_str());
    status = 1;
  }
  CoUninitialize();
  return status;
}
