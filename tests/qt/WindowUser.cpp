#include "WindowUser.h"

#include "DialogManager.h"

#include <QClipboard>
#include <QEvent>
#include <QGuiApplication>

#include <algorithm>
#include <map>

namespace {

constexpr int kPatience = 1000; // pumps for one event
constexpr int kHurriedMilliseconds = 5;

int ToQtKey(short key) {
    static const std::map<short, int> kKeys = {
        {kKeyOption, Qt::Key_Alt},  {kKeyCommand, Qt::Key_Control},  {kKeyShift, Qt::Key_Shift},
        {kKeySpace, Qt::Key_Space}, {kKeyDelete, Qt::Key_Backspace}, {kKeyReturn, Qt::Key_Return}};
    return kKeys.at(key);
}

int EntryOf(const MenuInfo& menu, const Act& act) {
    for (std::size_t i = 0; i < menu.entries.size(); ++i)
        if (menu.entries[i].text == act.text) return static_cast<int>(i) + 1;
    return act.entry;
}

} // namespace

/// Counts what the user's hands made, where it enters the program.
class WindowUser::ArrivalCounter : public QObject {
  public:
    ArrivalCounter() { qApp->installEventFilter(this); }

    std::ptrdiff_t count = 0;

    bool eventFilter(QObject* receiver, QEvent* event) override {
        constexpr QEvent::Type kHandMade[] = {QEvent::MouseMove, QEvent::MouseButtonPress,
                                              QEvent::MouseButtonRelease, QEvent::KeyPress,
                                              QEvent::KeyRelease};
        if (receiver->isWindowType()) count += std::ranges::count(kHandMade, event->type());
        return false;
    }
};

WindowUser::WindowUser(EventSource& display, Hands& theHands, std::vector<Act> theActs)
    : EventRelay(display), hands(theHands), acts(theActs.begin(), theActs.end()),
      arrivals(std::make_unique<ArrivalCounter>()) {}

WindowUser::~WindowUser() = default;

void WindowUser::Pump(int milliseconds) {
    if (milliseconds > 0) {
        if (arrivals->count >= expected)
            TakeNextStep();
        else if (++fruitlessPumps > kPatience)
            failure = "what the hands did has not arrived";
    }
    EventRelay::Pump(std::min(milliseconds, kHurriedMilliseconds));
}

// Between two acts one look for events brings nothing, so that a null event comes.
void WindowUser::TakeNextStep() {
    fruitlessPumps = 0;
    if (!steps.empty()) {
        const auto step = steps.front();
        steps.pop_front();
        return step();
    }
    if (acts.empty()) {
        failure = "the acts ran out";
        return;
    }
    Expand(acts.front());
    acts.pop_front();
}

void WindowUser::Expand(const Act& act) {
    using Kind = Act::Kind;
    switch (act.kind) {
    case Kind::pressItem:
        return ExpandPointer({Middle(act.item)});
    case Kind::pressAt:
    case Kind::drag:
        return ExpandPointer(act.points);
    case Kind::type:
        for (const QChar character : QString::fromStdString(act.text))
            ExpandStroke(character.toUpper().unicode(), character);
        return;
    case Kind::setText:
        QGuiApplication::clipboard()->setText(QString::fromStdString(act.text));
        ExpandPointer({Middle(act.item)});
        AddKey(Qt::Key_Control, {}, true);
        ExpandStroke(Qt::Key_A);
        ExpandStroke(Qt::Key_V);
        return AddKey(Qt::Key_Control, {}, false);
    case Kind::holdKey:
    case Kind::releaseKey:
        return AddKey(ToQtKey(act.key), act.key == kKeySpace ? " " : QString(),
                      act.kind == Kind::holdKey);
    case Kind::pressKey:
        return ExpandStroke(ToQtKey(act.key));
    case Kind::chooseEntry:
        return ExpandChoice(act);
    default:
        failure = "an act that hands cannot do";
    }
}

void WindowUser::ExpandPointer(const std::vector<Point>& points) {
    const auto button = [this](bool down) {
        steps.push_back([this, down] {
            ++expected;
            hands.Button(down);
        });
    };
    Move(points.front());
    button(true);
    for (std::size_t i = 1; i < points.size(); ++i) Move(points[i]);
    button(false);
}

void WindowUser::Move(Point local) {
    steps.push_back([this, local] {
        const Point origin = OpenDialogs().front()->origin;
        const QPoint global(origin.h + local.h, origin.v + local.v);
        if (global == mouse) return; // makes no event
        mouse = global;
        ++expected;
        hands.MoveTo(global);
    });
}

void WindowUser::AddKey(int key, const QString& text, bool down) {
    steps.push_back([this, key, text, down] {
        ++expected;
        hands.Key(key, text, down);
    });
}

void WindowUser::ExpandStroke(int key, const QString& text) {
    AddKey(key, text, true);
    AddKey(key, text, false);
}

// Opens the list and walks to the entry, past those that cannot be chosen.
void WindowUser::ExpandChoice(const Act& act) {
    ExpandPointer({Middle(act.item)});
    ExpandStroke(Qt::Key_Home);
    const MenuInfo& menu = **OpenDialogs().front()->Item(act.item)->menu;
    for (int entry = 1; entry < EntryOf(menu, act); ++entry)
        if (menu.CanChoose(static_cast<short>(entry))) ExpandStroke(Qt::Key_Down);
    ExpandStroke(Qt::Key_Return);
}

Point WindowUser::Middle(short item) const {
    const Rect& rect = OpenDialogs().front()->Item(item)->rect;
    return {static_cast<short>((rect.top + rect.bottom) / 2),
            static_cast<short>((rect.left + rect.right) / 2)};
}
