#pragma once

#include <stdexcept>

namespace mervo::desk {

/// What the store of notes throws; what() is one sentence for a person. Nothing was changed.
class NoteError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The note, or its folder, is no longer there.
class NoteGone final : public NoteError {
public:
    using NoteError::NoteError;
};

} // namespace mervo::desk
