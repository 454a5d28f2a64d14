#include <gtest/gtest.h>
#include "platform/qxhash.h"
TEST(Hash, Placeholder) { _Hash h(50, 3, 3, 0.333f); h.insert(1, 2); EXPECT_EQ(h.find(1)->data(), 2u); }
