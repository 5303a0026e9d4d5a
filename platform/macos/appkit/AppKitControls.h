// The ports' controls over AppKit's. None of them owns its control; the window does.
#pragma once

#import <AppKit/AppKit.h>

#include "platform/ports/Controls.h"

namespace platform::macos {

class AppKitImage : public Image {
public:
    explicit AppKitImage(NSImage* image) : m_image([image retain]) {}
    ~AppKitImage() override { [m_image release]; }
    AppKitImage(const AppKitImage&) = delete;
    AppKitImage& operator=(const AppKitImage&) = delete;

    NSImage* image() const { return m_image; }

private:
    NSImage* m_image;
};

class AppKitDocument : public Document {
public:
    explicit AppKitDocument(NSAttributedString* text) : m_text([text retain]) {}
    ~AppKitDocument() override { [m_text release]; }
    AppKitDocument(const AppKitDocument&) = delete;
    AppKitDocument& operator=(const AppKitDocument&) = delete;

    NSAttributedString* text() const { return m_text; }

private:
    NSAttributedString* m_text;
};

// A text that its place cuts off is shown whole in a tool tip.
class AppKitTextField : public TextField {
public:
    explicit AppKitTextField(NSTextField* field) : m_field(field) {}
    void setHidden(bool hidden) override;
    void setStringValue(const std::string& text) override;
    void setAttributedStringValue(const AttributedString& text) override;
    void setSelectable(bool selectable) override;
    void setAllowsEditingTextAttributes(bool allows) override;

private:
    NSTextField* m_field;
};

class AppKitButton : public Button {
public:
    explicit AppKitButton(NSButton* button) : m_button(button) {}
    void setHidden(bool hidden) override;
    void setEnabled(bool enabled) override;

private:
    NSButton* m_button;
};

class AppKitProgressIndicator : public ProgressIndicator {
public:
    explicit AppKitProgressIndicator(NSProgressIndicator* indicator) : m_indicator(indicator) {}
    void setHidden(bool hidden) override;
    void startAnimation() override;
    void stopAnimation() override;

private:
    NSProgressIndicator* m_indicator;
};

class AppKitImageView : public ImageView {
public:
    explicit AppKitImageView(NSImageView* view) : m_view(view) {}
    void setHidden(bool hidden) override;
    void setImage(std::unique_ptr<Image> image) override;

private:
    NSImageView* m_view;
};

class AppKitTextView : public TextView {
public:
    explicit AppKitTextView(NSTextView* view) : m_view(view) {}
    void setHidden(bool hidden) override;
    void setDocument(std::unique_ptr<Document> document) override;
    void setStandardTextColor() override;
    void setEditable(bool editable) override;

private:
    NSTextView* m_view;
};

class AppKitWindow : public Window {
public:
    explicit AppKitWindow(NSWindow* window) : m_window(window) {}
    void setTitle(const std::string& title) override;
    void orderOut() override;
    void makeKeyAndOrderFront() override;
    bool hasAttachedSheet() override;

    NSWindow* window() const { return m_window; }

private:
    NSWindow* m_window;
};

}  // namespace platform::macos
