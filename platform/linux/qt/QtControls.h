// The controls of the ports over widgets. None of them owns its widget.
#pragma once

#include <QImage>
#include <QPointer>
#include <functional>
#include <memory>

#include "platform/linux/qt/agreement/AgreementDocument.h"
#include "platform/ports/Controls.h"

class QPushButton;
class QTextBrowser;
class QWidget;

namespace platform::qt {

class BackgroundView;
class ElidedLabel;
class LinkLabel;
class Spinner;

class QtImage : public Image {
public:
    explicit QtImage(QImage pixels) : image(std::move(pixels)) {}
    QImage image;
};

// One line that is elided where it is too long. It knows no attributes: of an attributed text it shows the text.
class PlainTextField : public TextField {
public:
    explicit PlainTextField(ElidedLabel& label) : m_label(label) {}
    void setHidden(bool hidden) override;
    void setStringValue(const std::string& text) override;
    void setAttributedStringValue(const AttributedString& text) override;
    void setSelectable(bool selectable) override;
    void setAllowsEditingTextAttributes(bool) override {}  // links, which it does not show

private:
    ElidedLabel& m_label;
};

// Text with links. They can be clicked and reached by Tab once the field is selectable and allows text attributes.
class LinkTextField : public TextField {
public:
    explicit LinkTextField(LinkLabel& label) : m_label(label) {}
    void setHidden(bool hidden) override;
    void setStringValue(const std::string& text) override;
    void setAttributedStringValue(const AttributedString& text) override;
    void setSelectable(bool selectable) override;
    void setAllowsEditingTextAttributes(bool allows) override;

private:
    void applyInteraction();

    LinkLabel& m_label;
    bool m_selectable = false;
    bool m_allowsAttributes = false;
};

class QtButton : public Button {
public:
    explicit QtButton(QPushButton& button) : m_button(button) {}
    void setHidden(bool hidden) override;
    void setEnabled(bool enabled) override;

private:
    QPushButton& m_button;
};

class QtProgressIndicator : public ProgressIndicator {
public:
    explicit QtProgressIndicator(Spinner& spinner) : m_spinner(spinner) {}
    void setHidden(bool hidden) override;
    void startAnimation() override;
    void stopAnimation() override;

private:
    Spinner& m_spinner;
};

class QtImageView : public ImageView {
public:
    explicit QtImageView(BackgroundView& view) : m_view(view) {}
    void setHidden(bool hidden) override;
    void setImage(std::unique_ptr<Image> image) override;

private:
    BackgroundView& m_view;
};

// The view is made when it is first needed.
class QtTextView : public TextView {
public:
    explicit QtTextView(std::function<QTextBrowser&()> browser) : m_browser(std::move(browser)) {}
    void setHidden(bool hidden) override;
    void setDocument(std::unique_ptr<Document> document) override;
    void setStandardTextColor() override;
    void setEditable(bool editable) override;

private:
    std::function<QTextBrowser&()> m_browser;
    std::unique_ptr<AgreementDocument> m_document;
};

// A window, or the contents of a sheet. The widget is made when it is first needed.
class QtWindow : public Window {
public:
    explicit QtWindow(std::function<QWidget&()> widget) : m_widget(std::move(widget)) {}
    void setTitle(const std::string& title) override;
    void orderOut() override;
    void makeKeyAndOrderFront() override;
    bool hasAttachedSheet() override;

    QWidget& widget() { return m_widget(); }

private:
    std::function<QWidget&()> m_widget;
};

}  // namespace platform::qt
