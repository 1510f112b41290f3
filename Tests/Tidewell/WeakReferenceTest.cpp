#include "Tidewell/WeakReference.h"

#include <gtest/gtest.h>

#include <memory>

namespace tidewell {
namespace {

struct Owner {
  int value = 7;
  WeakReferenceSource<Owner> self{*this};
};

TEST(WeakReference, LeadsToItsObjectAsLongAsTheObjectExists) {
  auto owner = std::make_unique<Owner>();
  const WeakReference<Owner> reference = owner->self.make();
  ASSERT_TRUE(reference);
  EXPECT_EQ(reference.get(), owner.get());
  EXPECT_EQ(reference->value, 7);
  EXPECT_EQ((*reference).value, 7);
  owner.reset();
  EXPECT_FALSE(reference);
  EXPECT_EQ(reference.get(), nullptr);
}

TEST(WeakReference, IsNullByDefault) {
  EXPECT_FALSE(WeakReference<Owner>());
}

}  // namespace
}  // namespace tidewell
