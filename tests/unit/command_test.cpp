#include "engine/command.h"

#include <gtest/gtest.h>

TEST(Placeholder, Builds) { SUCCEED(); }
