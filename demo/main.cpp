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
constexpr Story kStories[] = {demo::TellSaveStory,    demo::TellAuditStory,  demo::TellEcnStory,
                              demo::TellCustBomStory, demo::TellBrowseStory, demo::TellImportStory};

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

void Introduce(const demo::Stage& stage, const Options& options) {
  stage.Say(
      L"A bicycle factory works with the component. What stands behind $ is a command: demo/bomcall is the "
      L"console client on the database of these stories, in which it is always the morning of 2026-03-31. -c "
      L"names the user: engineer (16401 in the tables), auditor (16402) or planner (16403); --lang is the "
      L"language of texts: chs and cht for simplified and traditional Chinese, en for English. Behind it "
      L"stands what the command prints. demo/sql is what the ERP's other programs do, such as a bill's form.");
  stage.Say(
      L"To follow a story by hand, run demo/fresh, which loads its database anew, and paste the commands "
      L"in a shell in the project's folder, in their order. A heading 2.3 is the third chapter of story 2, "
      L"which make demo STORY=2 tells alone.");
  if (options.trace)
    stage.Say(
        L"Below each call stands its trace: what it asked of the outside, in order. VoteAbort and "
        L"VoteComplete are votes on the unit of work: after the call the host commits if the last vote "
        L"was to complete and rolls back if it was to abort. Most calls that write vote to abort first, so "
        L"that a failure at any place leaves that as the last word.");
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
    Introduce(stage, *options);
    for (size_t i = 0; i < std::size(kStories); ++i) {
      if (options->story != 0 && options->story != i + 1) continue;
      stage.Story(i + 1);
      kStories[i](stage);
    }
  } catch (const com::ComError& error) {
    const std::string text = com::ToUtf8(error.source() + L": " + error.description());
    std::fprintf(stderr, "The demo failed: 0x%08lX %s\n", static_cast<unsigned long>(error.code()),
                 text.c_str());
    status = 1;
  }
  CoUninitialize();
  return status;
}
