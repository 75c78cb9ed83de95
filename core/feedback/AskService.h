#pragma once

#include "core/feedback/FeedbackStore.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace mervo {

/// What the owner and scheduled runs tell each other. No run ever waits for an answer: it finds it in the prompt of a
/// later one. Keeps no state of its own; only `ask` throws. What the store cannot do, StoreFailures tells.
class AskService {
public:
    explicit AskService(FeedbackStore& store) noexcept;
    static AskService& shared() noexcept;

    /// The automation whose run this process belongs to: RONDEL_RUN, which the supervisor sets for agents.
    static std::optional<std::string> runningAutomation();

    /// Sends a question by the channel of this id (none, or an empty one: the configured one; an unknown one: mail)
    /// and keeps it. Without a name of an automation the run that this process belongs to is the one that asks.
    /// Returns a sentence with the question's id. Throws ServiceError when the question cannot be sent; then nothing is
    /// kept.
    std::string ask(const std::string& text, const std::optional<std::string>& channel,
        const std::optional<std::string>& automation, std::optional<std::int64_t> expiresHours,
        const std::string& source);

    /// Tells every run of the automation (of all, if absent or empty) what to do until that expires or is removed.
    /// Returns a sentence with the directive's id.
    std::string directive(const std::string& text, const std::optional<std::string>& automation,
        std::optional<std::int64_t> expiresHours, const std::string& source) noexcept;

    /// Likewise about a decision of the owner.
    void recordVerdict(const std::string& text, const std::optional<std::string>& automation,
        std::optional<std::int64_t> expiresHours) noexcept;

    /// True when this call answered the question: the first answer stays.
    bool answer(const std::string& id, const std::string& text) noexcept;

    void remove(const std::string& id) noexcept;

    /// Fetches the answers to open questions, tidies up behind each that was new, and drops what has expired, or was
    /// asked 30 days ago and told to a run. Returns the number of answers recorded. Blocks for the channels; several
    /// processes may do it at once.
    std::int64_t harvestAll() noexcept;

    /// What a run's prompt begins with: directives, verdicts and answers, a line each; empty if there is nothing.
    struct Injection {
        std::string block;
        std::vector<std::string> answers; ///< the ids of their questions
    };
    Injection injectionBlock(const std::string& automation) noexcept;

    /// The answers count as told: no later run gets them. To be called when the run's program has the prompt, so that
    /// one that is killed before loses none.
    void markInjected(const Injection& injection) noexcept;

    /// The feed for people, newest first, a line each: of one automation (and what is for all) or, if absent or empty,
    /// of all.
    std::string summary(const std::optional<std::string>& automation) noexcept;

private:
    FeedbackStore& store_;
};

} // namespace mervo
