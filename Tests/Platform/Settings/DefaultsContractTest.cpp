// Tests the contract of settings with the store in memory and with the store on the disk.

#include "Tests/Fakes/FakeDefaults.h"
#include "Tests/Platform/Settings/DefaultsContract.h"
#include "Tests/Platform/Settings/SettingsFolder.h"

namespace platform {
namespace {

struct FakeStore {
  tidewell::FakeDefaults defaults;
};

struct TomlStore {
  SettingsFolder folder;
  TomlDefaults defaults{folder.file(), SettingsFolder::patient()};
};

using Stores = ::testing::Types<FakeStore, TomlStore>;
INSTANTIATE_TYPED_TEST_SUITE_P(FakeAndToml, DefaultsContract, Stores);

}  // namespace
}  // namespace platform
