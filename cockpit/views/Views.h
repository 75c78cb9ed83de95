#pragma once

class QQmlEngine;

/// The cockpit's views: the QML module "Mervo.Cockpit", whose root is `CockpitView`.
///
///     Views::prepare(engine);
///     window.setInitialProperties({ { "model", QVariant::fromValue(&model) }, { "dark", false } });
///     window.setSource(QUrl(Views::rootUrl));
///
/// `dark` and `isAnimated` of the root may change at any time. The root asks for what is not its own with the signals
/// `closeRequested()`, `settingsRequested(section)` and `quitRequested()`.
namespace mervo::Views {

/// Makes the module and its symbols known to an engine. Once for each engine, before the root is loaded.
void prepare(QQmlEngine& engine);

inline constexpr const char* rootUrl = "qrc:/qt-project.org/imports/Mervo/Cockpit/CockpitView.qml";

} // namespace mervo::Views
