// What stands in the place of the graphs while there is nothing to be shown: what the viewer waits
// for, and what one can do meanwhile.
#pragma once

#include <QScrollArea>
#include <functional>

class QLabel;
class QPushButton;

namespace wavo {

class FirstPage : public QScrollArea {
    Q_OBJECT

 public:
    /// What its buttons do. One whose function is empty is not there.
    struct Offers {
        std::function<void()> open_recording;
        std::function<void()> play_demo;
        std::function<void()> open_manual;
    };
    FirstPage(const Offers& offers, QWidget* parent);

    /// `link`: what is said of the master. `connects_itself`: nothing has to be done once there is
    /// one.
    void Tell(const QString& link, bool connects_itself);

    /// Pixels that all of it needs where it is so wide.
    [[nodiscard]] int NeededHeight(int width) const;

    /// The button that is met first.
    [[nodiscard]] QWidget* FirstButton() const;

 private:
    QWidget* MakeButtons(const Offers& offers);
    /// As wide as it is read with ease.
    void Narrow(QWidget& widget) const;

    QLabel* m_waits;  // children
    QLabel* m_link;
};

}  // namespace wavo
