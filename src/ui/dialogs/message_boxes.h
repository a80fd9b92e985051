// Message boxes. All of them go through here, so that tests can answer and check them.
#pragma once

#include <functional>
#include <string>

class QWidget;

namespace wavo {

enum class BoxIcon { kExclamation, kQuestion, kInformation };
enum class BoxButtons { kOk, kOkCancel, kYesNo };
enum class BoxAnswer { kOk, kCancel, kYes, kNo };

/// What a message box shows. Texts are UTF-8.
struct Box {
    std::string text;
    std::string caption;
    BoxIcon icon = BoxIcon::kExclamation;
    BoxButtons buttons = BoxButtons::kOk;

    friend bool operator==(const Box&, const Box&) = default;
};

/// Shows a box over `parent` and waits for the answer; messages are handled meanwhile. Closing
/// the box answers with the button that changes nothing.
BoxAnswer ShowBox(QWidget* parent, const Box& box);

/// A fault that the user must see: caption "ERROR", exclamation icon, OK.
void ShowErrorBox(QWidget* parent, const std::string& text);

/// Answers all boxes from now on instead of showing them; null shows them again.
using BoxHandler = std::function<BoxAnswer(const Box&)>;
void SetBoxHandler(BoxHandler handler);

}  // namespace wavo
