#include "core/foundation/AutonomyMode.h"

namespace mervo {

std::string_view rawValue(AutonomyMode mode)
{
    switch (mode) {
    case AutonomyMode::panic:
        return "panic";
    case AutonomyMode::copilote:
        return "copilote";
    case AutonomyMode::yolo:
        return "yolo";
    }
    return {};
}

std::optional<AutonomyMode> autonomyMode(std::string_view text)
{
    for (const AutonomyMode mode : kAllAutonomyModes) {
        if (text == rawValue(mode))
            return mode;
    }
    return std::nullopt;
}

std::string_view title(AutonomyMode mode)
{
    switch (mode) {
    case AutonomyMode::panic:
        return "Panic";
    case AutonomyMode::copilote:
        return "Copilote";
    case AutonomyMode::yolo:
        return "YOLO";
    }
    return {};
}

std::string_view description(AutonomyMode mode)
{
    switch (mode) {
    case AutonomyMode::panic:
        return "Locks everything - every change waits for approval. Only reads run.";
    case AutonomyMode::copilote:
        return "Creations (draft, reminder, event...) run; destructive actions wait.";
    case AutonomyMode::yolo:
        return "Full access - every action runs immediately, audit-only.";
    }
    return {};
}

} // namespace mervo
