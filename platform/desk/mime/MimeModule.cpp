#include "platform/desk/mime/MimeReader.h"
#include "platform/desk/mime/MimeWriter.h"

namespace {

class Engine final : public mervo::desk::MimeEngine {
public:
    mervo::desk::MimeContent read(std::string_view message) const override { return mervo::desk::readMime(message); }
    void write(const mervo::desk::MimeDraft& draft, int descriptor) const override
    {
        mervo::desk::writeMime(draft, descriptor);
    }
};

} // namespace

extern "C" const mervo::desk::MimeEngine* mervoMimeEngine()
{
    static const Engine engine;
    return &engine;
}
