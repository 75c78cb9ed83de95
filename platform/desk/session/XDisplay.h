#pragma once

#include <array>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <vector>
#include <xcb/xcb.h>

/// What closing and placing windows have in common: the X display, and the window manager behind it (EWMH 1.5).
namespace mervo::desk {

struct FreeXReply {
    void operator()(void* memory) const { std::free(memory); }
};
template <typename Reply>
using XReply = std::unique_ptr<Reply, FreeXReply>;

struct DisconnectX {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};
using XConnection = std::unique_ptr<xcb_connection_t, DisconnectX>;

/// EWMH, source indication: what the user does with the windows of others.
inline constexpr std::uint32_t kFromPager = 2;

/// Null without a display, or when it does not answer.
XConnection connectToDisplay();

/// A property of 32-bit values, at most so many; empty when the window has none.
std::vector<std::uint32_t> property(
    const XConnection& to, xcb_window_t window, std::string_view name, xcb_atom_t type, std::uint32_t most);

/// Sends the window manager a request about a window.
void ask(const XConnection& on, xcb_window_t root, xcb_window_t window, std::string_view what,
    const std::array<std::uint32_t, 5>& values);

/// Returns when the server has taken all that was sent.
void awaitServer(const XConnection& display);

} // namespace mervo::desk
