// Runs one campaign, and prints what it found as fields with tabs between them, for
// scripts/campaign.
//
//   staylit-campaign --list
//   staylit-campaign NAME [--quick]
//
// Ends with status 0 when everything held, 1 when something did not, 2 when there is no such
// campaign.

#include <algorithm>
#include <cstdio>
#include <string>
#include <string_view>

#include "Tests/Campaign/Campaigns.h"
#include "Tests/Platform/Support/ProcessNamespace.h"

namespace staylit::campaign {
namespace {

int list() {
  for (const Campaign& campaign : campaigns()) {
    std::printf("%s\t%s\t%s\n", std::string(campaign.name).c_str(),
                std::string(campaign.whatIsDone).c_str(),
                std::string(campaign.whatMustHold).c_str());
  }
  return 0;
}

int run(const Campaign& campaign, Effort effort) {
  const Outcome outcome = campaign.run(effort);
  std::printf("%lld\t%zu\t%s\t%s\n", static_cast<long long>(outcome.runs), outcome.findings.size(),
              outcome.measured.c_str(), outcome.notPossible.c_str());
  for (const std::string& finding : outcome.findings)
    std::printf("%s\n", finding.c_str());
  return outcome.findings.empty() ? 0 : 1;
}

}  // namespace
}  // namespace staylit::campaign

int main(int argc, char** argv) {
  using namespace staylit::campaign;
  const std::string_view name = argc > 1 ? argv[1] : "--list";
  if (name == "--list") return list();
  const auto found = std::ranges::find(campaigns(), name, &Campaign::name);
  if (found == campaigns().end()) {
    std::fprintf(stderr, "staylit-campaign: there is no campaign '%s'\n", argv[1]);
    return 2;
  }
  const Effort effort{argc > 2 && std::string_view(argv[2]) == "--quick"};
  return platform::testing::ProcessNamespace::run([&] { return run(*found, effort); });
}
