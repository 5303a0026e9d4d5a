// The picture of the plug-in, filling its place with its proportions kept; a calm backdrop while there is none.
#pragma once

#include <QImage>
#include <QPixmap>
#include <QWidget>

namespace platform::qt {

class BackgroundView : public QWidget {
    Q_OBJECT

public:
    explicit BackgroundView(QWidget* parent = nullptr);

    void setImage(const QImage& image);  // a null image empties the view
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QImage m_image;
    QPixmap m_scaled;  // m_image for the present size and screen
};

}  // namespace platform::qt
