#include "platform/secret.h"
#include "tests/support/ReleasedMemory.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace mervo::platform {
namespace {

constexpr std::string_view kPassword = "a password of 33 unequal letters!"; // too long to be kept within a std::string

/// In how many released blocks the password was found.
template <typename Work>
int leftBehind(Work work)
{
    test::ReleasedMemory::found = 0;
    test::ReleasedMemory::wanted = kPassword;
    work();
    test::ReleasedMemory::wanted = {};
    return test::ReleasedMemory::found;
}

void grow()
{
    Secret secret;
    for (const char c : kPassword)
        secret.append({&c, 1});
    secret.append(std::string(1000, 'x'));
    EXPECT_TRUE(secret.view().starts_with(kPassword));
}

void moveAndAssign()
{
    Secret secret(kPassword), copy = secret.copy(), moved(std::move(secret));
    EXPECT_EQ(moved.view(), kPassword);
    copy = Secret("another");
    moved = std::move(copy);
    EXPECT_EQ(moved.view(), "another");
}

void shorten()
{
    Secret secret(kPassword);
    secret.append("\n");
    secret.shorten(kPassword.size());
    EXPECT_EQ(secret.view(), kPassword);
    secret.shorten(std::string_view::npos);
    EXPECT_EQ(secret.view(), kPassword);
    secret.shorten(0);
    const std::string_view all(secret.data(), kPassword.size() + 1);
    EXPECT_EQ(all.find_first_not_of('\0'), std::string_view::npos);
}

void fail()
{
    try {
        const Secret secret(kPassword);
        throw std::runtime_error("x");
    } catch (const std::runtime_error&) {
    }
}

TEST(Secret, leavesNothingInReleasedMemory)
{
    EXPECT_EQ(leftBehind([] { const std::string plain(kPassword); }), 1) << "this test sees nothing";
    EXPECT_EQ(leftBehind(grow), 0);
    EXPECT_EQ(leftBehind(moveAndAssign), 0);
    EXPECT_EQ(leftBehind(shorten), 0);
    EXPECT_EQ(leftBehind(fail), 0);
}

} // namespace
} // namespace mervo::platform
