#include "cockpit/views/Views.h"

#include "cockpit/views/SymbolProvider.h"
#include "cockpit/views/Symbols.h"

#include <QQmlEngine>

// Written by the build from the types of the module; naming it here keeps the linker from dropping it.
void qml_register_types_Mervo_Cockpit();

namespace mervo {

void Views::prepare(QQmlEngine& engine)
{
    static const bool isRegistered = [] {
        qml_register_types_Mervo_Cockpit();
        return true;
    }();
    Q_UNUSED(isRegistered)
    Symbols::useFallbackTheme();
    engine.addImageProvider("symbols", new SymbolProvider); // the engine owns it
}

} // namespace mervo
