// What the question for an administrator's password shows: who asks and for what, a name, a field, and what was wrong
// with the previous answer.
#pragma once

#include <QWidget>
#include <functional>
#include <optional>
#include <vector>

#include "platform/linux/qt/SheetOverlay.h"
#include "platform/linux/rights/PasswordPrompt.h"

class QComboBox;
class QGridLayout;
class QLabel;
class QPushButton;

namespace platform::qt {

class ElidedLabel;
class PasswordField;
class Spinner;

class PasswordSheet : public QWidget {
    Q_OBJECT

public:
    using Answered = std::function<void(std::optional<rights::PasswordAnswer>)>;

    // `asker` is the program's name for its user. `answered` may be called for an answer, and once more for a cancel
    // while that answer is checked; it may delete this object later, not at once.
    PasswordSheet(const QString& asker, Answered answered);

    // The state of a new question. A name that was chosen or typed stays; the password never does. It takes the focus
    // unless another window, or a sheet above, has it.
    void ask(const rights::PasswordRequest& request);
    bool isChecking() const { return m_isChecking; }

    SheetButtons buttons() const;
    void cancel();

    PasswordField& field() { return *m_field; }

protected:
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* makeTexts(const QString& asker);
    QGridLayout* makeFields();
    QLayout* makeButtonRow();
    void setNames(const rights::PasswordRequest& request);
    void setQuestion(const rights::PasswordRequest& request);
    void setProblem(const rights::PasswordRequest& request);
    void setChecking(bool checking);
    void setCapsLock(bool on);
    void applyState();
    void answer();
    std::string user() const;

    Answered m_answered;
    std::vector<rights::Administrator> m_administrators;
    bool m_isChecking = false;
    bool m_isLockedOut = false;
    bool m_isAsked = false;  // not for the first time

    QLabel* m_explanation = nullptr;
    QGridLayout* m_fields = nullptr;
    QLabel* m_nameLabel = nullptr;
    ElidedLabel* m_onlyName = nullptr;
    QComboBox* m_names = nullptr;
    QLabel* m_question = nullptr;
    PasswordField* m_field = nullptr;
    QLabel* m_capsLock = nullptr;
    QLabel* m_problem = nullptr;
    QLabel* m_details = nullptr;
    Spinner* m_spinner = nullptr;
    ElidedLabel* m_checking = nullptr;
    QPushButton* m_cancel = nullptr;
    QPushButton* m_allow = nullptr;
};

}  // namespace platform::qt
