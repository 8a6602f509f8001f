// A line across the window that says what went wrong or was done, until it is closed.
#pragma once

#include <QFrame>

class QLabel;
class QToolButton;

namespace gif89 {

class MessageBar : public QFrame {
  public:
    enum class Kind : std::uint8_t { note, warning, error };

    explicit MessageBar(QWidget* parent = nullptr);

    void Say(Kind kind, const QString& sentence);
    /// What is said now; empty when nothing is.
    QString Text() const;

  protected:
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void Color();

    QLabel* icon;
    QLabel* text;
    QToolButton* closer;
    Kind kind = Kind::note;
};

} // namespace gif89
