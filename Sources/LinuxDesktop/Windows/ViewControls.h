#pragma once

#include "Platform/View.h"

#include <QCheckBox>
#include <QPushButton>

namespace stemvault::windows {

/// A button of a view, with a border or as a label only.
class ViewButton final : public QPushButton {
public:
    ViewButton();
    void show(const Button& button);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    [[nodiscard]] const Symbol* symbol() const { return std::get_if<Symbol>(&shown.label); }
    [[nodiscard]] QColor ink() const;
    [[nodiscard]] QMargins margins() const;
    [[nodiscard]] QRect frame() const;
    void paintFrame(QPainter& painter) const;

    Button shown;
};

/// A switch with its label in front.
class ViewToggle final : public QCheckBox {
public:
    ViewToggle();
    void show(const Toggle& toggle);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    [[nodiscard]] bool hitButton(const QPoint& position) const override;

private:
    [[nodiscard]] QRectF track() const;

    Toggle shown;
};

} // namespace stemvault::windows
