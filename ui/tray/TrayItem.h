#pragma once

#include "ui/texts/Dashboard.h"

#include <QMenu>
#include <QObject>

#include <memory>

class QAction;

namespace vesk {

class HostedItem;
class TrayHost;

/// The tray item with its menu: there while the desktop has a place for it.
class TrayItem final : public QObject {
    Q_OBJECT

public:
    explicit TrayItem(std::unique_ptr<TrayHost> host);
    TrayItem(const TrayItem&) = delete;
    TrayItem& operator=(const TrayItem&) = delete;
    ~TrayItem() override;

    /// Touches only what differs from what is shown.
    void show(const Dashboard& dashboard);

    /// There with or without a place for the item; its entries serve elsewhere too.
    [[nodiscard]] QMenu& menu() noexcept { return menu_; }

    [[nodiscard]] bool menuOpen() const noexcept { return menuOpen_; }

    /// Whether a person has the item to click on.
    [[nodiscard]] bool isPresent() const;

signals:
    void presenceChanged();
    void menuWillOpen();
    void menuDidClose();
    void openPressed();
    void startPressed();
    void setupPressed();
    void quitPressed();

private:
    void makeMenu();
    void followHost();
    void noteMenu(bool open);

    std::unique_ptr<TrayHost> host_;
    QMenu menu_;
    QAction* trayState_ = nullptr;
    QAction* trayAction_ = nullptr;
    Dashboard shown_;
    bool menuOpen_ = false;
    std::unique_ptr<HostedItem> item_;
};

} // namespace vesk
