#include "platform/secret.h"

#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <malloc.h>
#include <optional>
#include <stdexcept>

namespace {

constexpr std::string_view kPassword = "a password of 33 unequal letters!"; // too long to be kept within a std::string
bool watching = false;
int found = 0; ///< released blocks that still held the password

void release(void* block) noexcept
{
    if (watching && block != nullptr
        && std::string_view(static_cast<const char*>(block), malloc_usable_size(block)).find(kPassword.substr(0, 16))
            != std::string_view::npos)
        ++found;
    if (block != nullptr)
        std::memset(block, 0, malloc_usable_size(block)); // what is left here shows only once
    std::free(block);
}

} // namespace

// The memory of this test program is looked at when it is released.
void* operator new(std::size_t size)
{
    void* block = std::malloc(size == 0 ? 1 : size);
    return block != nullptr ? block : throw std::bad_alloc();
}
void operator delete(void* block) noexcept
{
    release(block);
}
void operator delete(void* block, std::size_t) noexcept
{
    release(block);
}

namespace mervo::platform {
namespace {

template <typename Work>
int leftBehind(Work work)
{
    found = 0;
    watching = true;
    work();
    watching = false;
    return found;
}

TEST(Secret, leavesNothingInReleasedMemory)
{
    EXPECT_EQ(leftBehind([] { std::string plain(kPassword); }), 1) << "the test sees nothing";

    EXPECT_EQ(leftBehind([] { Secret secret(kPassword); }), 0) << "at its end";
    EXPECT_EQ(leftBehind([] {
        Secret secret;
        for (const char c : kPassword) // grows on the way
            secret.append({&c, 1});
        secret.append(std::string(1000, 'x'));
        EXPECT_TRUE(secret.view().starts_with(kPassword));
    }),
        0)
        << "growing";
    EXPECT_EQ(leftBehind([] {
        Secret secret(kPassword), copy = secret.copy(), moved(std::move(secret));
        copy = Secret("another");
        moved = std::move(copy);
        EXPECT_EQ(moved.view(), "another");
    }),
        0)
        << "moving and assigning";
    EXPECT_EQ(leftBehind([] {
        Secret secret(kPassword);
        secret.append("\n");
        secret.shorten(kPassword.size());
        EXPECT_EQ(secret.view(), kPassword);
        secret.shorten(0);
        const std::string_view all(secret.data(), kPassword.size() + 1);
        EXPECT_EQ(all.find_first_not_of('\0'), std::string_view::npos);
    }),
        0)
        << "shortening";
    EXPECT_EQ(leftBehind([] {
        try {
            std::optional<Secret> secret(kPassword);
            throw std::runtime_error("x");
        } catch (const std::runtime_error&) {
        }
    }),
        0)
        << "an exception";
}

} // namespace
} // namespace mervo::platform
