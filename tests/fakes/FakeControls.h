// Controls that remember what they were told.
#pragma once

#include <optional>

#include "platform/ports/Controls.h"

namespace fakes {

template <typename Control>
class FakeView : public Control {
public:
    bool hidden = false;
    void setHidden(bool value) override { hidden = value; }
};

class FakeTextField : public FakeView<platform::TextField> {
public:
    std::string text = "design-time";
    platform::AttributedString attributed;
    bool selectable = false;
    bool allowsEditingTextAttributes = false;

    void setStringValue(const std::string& value) override { text = value; }
    void setAttributedStringValue(const platform::AttributedString& value) override { attributed = value; }
    void setSelectable(bool value) override { selectable = value; }
    void setAllowsEditingTextAttributes(bool value) override { allowsEditingTextAttributes = value; }
};

class FakeButton : public FakeView<platform::Button> {
public:
    bool enabled = true;
    void setEnabled(bool value) override { enabled = value; }
};

class FakeProgressIndicator : public FakeView<platform::ProgressIndicator> {
public:
    bool animating = false;
    int starts = 0;
    void startAnimation() override {
        animating = true;
        ++starts;
    }
    void stopAnimation() override { animating = false; }
};

class FakeImage : public platform::Image {
public:
    explicit FakeImage(std::string from) : path(std::move(from)) {}
    std::string path;
};

class FakeImageView : public FakeView<platform::ImageView> {
public:
    bool touched = false;
    std::unique_ptr<platform::Image> image;
    void setImage(std::unique_ptr<platform::Image> value) override {
        touched = true;
        image = std::move(value);
    }
};

class FakeDocument : public platform::Document {
public:
    explicit FakeDocument(std::string from) : path(std::move(from)) {}
    std::string path;
};

class FakeTextView : public FakeView<platform::TextView> {
public:
    std::unique_ptr<platform::Document> document;
    bool standardColor = false;
    bool editable = true;

    void setDocument(std::unique_ptr<platform::Document> value) override {
        document = std::move(value);
        standardColor = false;  // a new text brings its own colours
    }
    void setStandardTextColor() override { standardColor = true; }
    void setEditable(bool value) override { editable = value; }
};

class FakeWindow : public platform::Window {
public:
    std::string title = "design-time";
    int orderedOut = 0;
    int broughtToFront = 0;
    bool sheet = false;

    void setTitle(const std::string& value) override { title = value; }
    void orderOut() override { ++orderedOut; }
    void makeKeyAndOrderFront() override { ++broughtToFront; }
    bool hasAttachedSheet() override { return sheet; }
};

}  // namespace fakes
