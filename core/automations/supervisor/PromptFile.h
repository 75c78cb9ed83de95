#pragma once

#include <string>
#include <string_view>

/// What an agent reads: what its operator has to say, its instructions, and how it tells that it is done.
namespace mervo::PromptFile {

/// `feedback` may be empty (AskService::injectionBlock).
std::string text(std::string_view feedback, std::string_view instructions);

} // namespace mervo::PromptFile
