#pragma once

#include "tests/simulation/world/Chronicle.h"
#include "tests/simulation/world/Dice.h"
#include "tests/simulation/world/Screen.h"
#include "tests/simulation/world/Witness.h"

#include <functional>

class QMenu;

namespace vesk {

class Control;

/// A person before the program, who presses everything that can be pressed, in any order.
class SimulatedPerson {
public:
    SimulatedPerson(Dice& dice, Chronicle& chronicle, Witness& witness);

    /// Comes for a while, in a mood of its own.
    void arrive() { determined_ = dice_.oneIn(3); }

    /// Sits down before a program that was started, or gets up from it.
    void meet(Screen* screen, Control* control);

    /// Does one thing, perhaps twice.
    void act();

    /// Picks the start action of the desktop's menu entry.
    void askForStart();

    /// Closes what is open, as somebody who leaves.
    void leave();

private:
    using Meaning = std::function<void()>;

    void actOnce();
    void getThroughSetup(QWidget& front);
    void actInMenu(QMenu& menu);
    void actOutside();
    void actInWindow();
    void actInSettings();
    void actInSetup();
    void actInAlert(Alert& alert);
    void useKeyboard(QWidget& window);

    void click(QWidget& control, const QString& name);
    void pressKey(QWidget& window, Qt::Key key, Qt::KeyboardModifiers modifiers, QStringView name);
    void close(QWidget& window, const Meaning& meaning);

    /// What it means to use a control, as it is now.
    [[nodiscard]] Meaning meaningOf(const QWidget* control) const;
    [[nodiscard]] Meaning meaningInSetup(const QWidget* control) const;

    /// What it means to press Escape, or to close the window.
    [[nodiscard]] Meaning dismissalOf(const QWidget& window) const;

    void note(const QString& what) { chronicle_.note(u"person", what); }

    Dice& dice_;
    Chronicle& chronicle_;
    Witness& witness_;
    bool determined_ = false; ///< to get through setup, whatever alerts say
    Screen* screen_ = nullptr;
    Control* control_ = nullptr;
};

} // namespace vesk
