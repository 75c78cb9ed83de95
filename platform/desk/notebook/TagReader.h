#pragma once

#include "platform/desk/notebook/HtmlSink.h"

#include <string_view>

/// HTML read from left to right in time that grows with its length, whatever it holds.
namespace mervo::desk {

/// Reads a document of the plain kind that notes are: a handful of tags, nested as they should be, and nothing that the
/// rules of HTML would repair. False for any other document, of which the sink may have got a part. For the documents
/// that it accepts the sink gets what an HTML parser would give it.
bool readPlainHtml(std::string_view html, HtmlSink& sink);

/// Reads anything by taking its tags away: no tag is supplied or closed, and a `close` may come without its `open`.
void readLeniently(std::string_view html, HtmlSink& sink);

} // namespace mervo::desk
