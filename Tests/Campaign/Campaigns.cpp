#include "Tests/Campaign/Campaigns.h"

#include <vector>

namespace staylit::campaign {

std::span<const Campaign> campaigns() {
  static const std::vector<Campaign> all = {
      // name, what is done, what must hold, function
  };
  return all;
}

}  // namespace staylit::campaign
