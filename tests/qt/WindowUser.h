// Plays a script's acts on a real display: every act becomes what hands do with mouse and keyboard.
#pragma once

#include "EventRelay.h"
#include "ScriptSource.h"

#include <QObject>
#include <QPoint>
#include <QString>

#include <deque>
#include <functional>
#include <memory>

/// Mouse and keyboard. Each call, and each stroke's two halves, makes one event.
class Hands {
  public:
    virtual ~Hands() = default;
    virtual void MoveTo(QPoint global) = 0;
    virtual void Button(bool down) = 0;
    /// `key` is the toolkit's code; `text` what it types.
    virtual void Key(int key, const QString& text, bool down) = 0;
};

/// Events made inside the program, for the window in front.
std::unique_ptr<Hands> MakeOwnHands();
/// Events made by the X server on behalf of another program, xdotool.
std::unique_ptr<Hands> MakeXHands();

/// Stands between the toolbox and a display and does the next thing whenever the toolbox waits and
/// the last one has arrived, so that nothing depends on how fast the machine is.
class WindowUser : public gif89::EventRelay {
  public:
    WindowUser(EventSource& display, Hands& hands, std::vector<Act> acts);
    ~WindowUser() override;

    /// Why the acts could not be played to their end; empty when they were.
    const std::string& Failure() const { return failure; }

    void Pump(int milliseconds) override;
    bool Failed() override { return !failure.empty(); }

  private:
    class ArrivalCounter;

    void TakeNextStep();
    void Expand(const Act& act);
    void ExpandPointer(const std::vector<Point>& points);
    void ExpandStroke(int key, const QString& text = {});
    void ExpandChoice(const Act& act);
    void Move(Point local);
    void AddKey(int key, const QString& text, bool down);
    Point Middle(short item) const;

    Hands& hands;
    std::deque<Act> acts;
    std::deque<std::function<void()>> steps;
    std::unique_ptr<ArrivalCounter> arrivals;
    std::ptrdiff_t expected = 0;
    int fruitlessPumps = 0;
    QPoint mouse;
    std::string failure;
};
