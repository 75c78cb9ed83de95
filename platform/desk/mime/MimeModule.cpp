#include "platform/desk/mime/MimeReader.h"
#include "platform/desk/mime/MimeWriter.h"

namespace mervo::desk {
namespace {

class Engine final : public MimeEngine {
public:
    MimeContent read(std::string_view message) const override { return readMime(message); }
    void write(const MimeDraft& draft, int descriptor) const override { writeMime(draft, descriptor); }
};

} // namespace

const MimeEngine* mervoMimeEngine()
{
    static const Engine engine;
    return &engine;
}

} // namespace mervo::desk
