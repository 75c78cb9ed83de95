/// The desk's mail from inside: `bench-mail ROUNDS` on the desk that the environment names, with an index that is
/// there. Prints samples as bench-pairs does: "load" is a new process's first look at all mailboxes, "check" a second
/// look, which has only to find that nothing changed.
#include "bench/Measure.h"
#include "platform/desk/applications/Desk.h"
#include "platform/desk/mail/MailStore.h"
#include "platform/desk/settings/Places.h"

#include <cstdio>
#include <exception>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace mervo::bench {
namespace {

std::size_t lookAtAll(desk::MailStore& store)
{
    std::size_t messages = 0;
    for (const desk::MailAccountSettings& account : store.accounts()) {
        for (const desk::MailFolder& folder : store.mailboxes(account))
            messages += store.messages(account, folder.path)->messages().size();
    }
    return messages;
}

nlohmann::json measure(int rounds)
{
    std::vector<std::int64_t> load, check;
    std::size_t messages = 0;
    for (int round = -1; round < rounds; ++round) {
        desk::MailStore store(desk::mailAccounts(desk::Configuration::load(desk::deskSections())), desk::cacheFolder());
        const std::int64_t first = timed([&] { messages = lookAtAll(store); });
        const std::int64_t second = timed([&] {
            if (lookAtAll(store) != messages)
                throw std::runtime_error("the mail changed while it was measured");
        });
        if (round < 0)
            continue;
        load.push_back(first);
        check.push_back(second);
    }
    const nlohmann::json notes = {{"messages", messages}};
    return {{"load", {{"wall", load}, {"notes", notes}}}, {"check", {{"wall", check}, {"notes", notes}}}};
}

} // namespace
} // namespace mervo::bench

int main(int count, char** words)
{
    try {
        if (count != 2)
            throw std::runtime_error("usage: bench-mail ROUNDS");
        std::puts(mervo::bench::measure(std::stoi(words[1])).dump().c_str());
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench-mail: %s\n", error.what());
        return 1;
    }
}
