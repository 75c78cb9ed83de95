#include "cockpit/shell/Shell.h"

#include "cockpit/shell/StartUp.h"
#include "core/foundation/ConfigDir.h"

#include <QCoreApplication>
#include <QMessageBox>
#include <QPushButton>

namespace mervo {

Shell::Shell(const std::filesystem::path& program)
    : desktop_(platform::connectDesktop(program))
    , item_(*desktop_.trayHost, *desktop_.appearance)
{
    connect(&item_, &StatusItem::openRequested, this, &Shell::open);
    connect(&item_, &StatusItem::activated, this, [this] {
        if (popover_)
            popover_->toggle(item_.geometry());
    });
    connect(&item_, &StatusItem::quitRequested, qApp, &QCoreApplication::quit);
    desktop_.appearance->onChange = [this] { applyAppearance(); };
    item_.show();
}

/// The end of the model may wait for tools that run on an approval: by then nothing may be there to click on.
Shell::~Shell()
{
    item_.hide();
}

void Shell::start()
{
    starting_ = StartUp::ofThisBuild().run();
    model_ = std::make_unique<CockpitModel>(
        Surroundings{*desktop_.notifier, *desktop_.workspace, *desktop_.loginItem, automations_, accounts_});
    popover_ = std::make_unique<Popover>(*model_);

    StatusIconDriver& icon = *model_->icon();
    connect(&icon, &StatusIconDriver::imageChanged, &item_, [this, &icon] { item_.setImage(icon.state(), icon.t()); });
    connect(model_.get(), &CockpitModel::waitingCountChanged, this, &Shell::updateSummary);
    connect(model_->queue(), &CockpitQueue::unreadableChanged, this, &Shell::updateSummary);
    connect(model_->settings(), &CockpitSettings::autonomyModeChanged, this, &Shell::updateSummary);
    connect(model_.get(), &CockpitModel::activationRequested, this, &Shell::open);
    connect(popover_.get(), &Popover::settingsRequested, this, &Shell::openSettings);
    connect(popover_.get(), &Popover::quitRequested, qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    item_.setImage(icon.state(), icon.t());
    updateSummary();
    applyAppearance();
}

void Shell::open()
{
    if (popover_)
        popover_->open(item_.geometry());
}

void Shell::applyAppearance()
{
    item_.repaint();
    if (!popover_)
        return;
    popover_->setDark(desktop_.appearance->isDark());
    popover_->setAnimated(desktop_.appearance->isAnimated());
}

void Shell::updateSummary()
{
    const std::string mode(title(model_->settings()->autonomyMode()));
    item_.setSummary(QString::fromStdString(mode), model_->waitingCount(), model_->queue()->unreadable());
}

void Shell::openSettings()
{
    const auto file = ConfigDir::url() / "config.json";
    if (!settings_) {
        settings_ = std::make_unique<QMessageBox>(QMessageBox::Information, "Mervo Settings",
            QString("The settings are in %1.").arg(QString::fromStdString(file.string())), QMessageBox::Close);
        settings_->setTextFormat(Qt::PlainText);
        const QPushButton* show = settings_->addButton("Open the File", QMessageBox::ActionRole);
        connect(show, &QPushButton::clicked, this, [this, file] { desktop_.workspace->openFile(file); });
    }
    settings_->show();
    settings_->raise();
    settings_->activateWindow();
}

} // namespace mervo
