// The controls of a window, as the application's logic sees them. Main thread only. The window owns its controls; the
// pointers that it hands out live as long as the application runs.
#pragma once

#include <memory>
#include <string>

#include "platform/ports/AttributedString.h"

namespace platform {

class View {
public:
    virtual ~View() = default;
    virtual void setHidden(bool hidden) = 0;
};

class TextField : public virtual View {
public:
    virtual void setStringValue(const std::string& text) = 0;
    virtual void setAttributedStringValue(const AttributedString& text) = 0;
    virtual void setSelectable(bool selectable) = 0;
    virtual void setAllowsEditingTextAttributes(bool allows) = 0;
};

class Button : public virtual View {
public:
    virtual void setEnabled(bool enabled) = 0;
};

// Indeterminate: it shows that something goes on, not how far it is.
class ProgressIndicator : public virtual View {
public:
    virtual void startAnimation() = 0;
    virtual void stopAnimation() = 0;
};

class Image {
public:
    virtual ~Image() = default;
};

class ImageView : public virtual View {
public:
    virtual void setImage(std::unique_ptr<Image> image) = 0;  // none empties the view
};

// A rich-text document with whatever it brings along.
class Document {
public:
    virtual ~Document() = default;
};

class TextView : public virtual View {
public:
    virtual void setDocument(std::unique_ptr<Document> document) = 0;  // replaces all of the text; none empties it
    virtual void setStandardTextColor() = 0;  // overrides the colours of the text that is there
    virtual void setEditable(bool editable) = 0;
};

class Window {
public:
    virtual ~Window() = default;
    virtual void setTitle(const std::string& title) = 0;
    virtual void orderOut() = 0;  // takes it off the screen; nothing when it is not there
    virtual void makeKeyAndOrderFront() = 0;
    virtual bool hasAttachedSheet() = 0;
};

}  // namespace platform
