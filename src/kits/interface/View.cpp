// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/View.h"

#include "kits/interface/Window.h"
#include "kits/interface/backends/HeldKeys.h"
#include "kits/interface/backends/ViewWidget.h"
#include "kits/support/Utf8.h"

#include <algorithm>
#include <cmath>
#include <iterator>

BView::BView(BRect frame, const char* name, uint32 resizingMode, uint32 flags)
    : BHandler(name),
      frame(frame),
      resizingMode(resizingMode),
      flags(flags),
      widget(std::make_unique<kits::ViewWidget>(*this)) {
    widget->setObjectName(kits::ToQt(Name()));
    widget->setGeometry(kits::ToQt(frame));
}

BView::~BView() {
    while (!children.empty())
        delete children.back();
    if (parent)
        parent->RemoveChild(this);
    else if (window)
        window->RemoveChild(this);
}

void BView::Draw(BRect) {}
void BView::MouseDown(BPoint) {}
void BView::MouseUp(BPoint) {}
void BView::MouseMoved(BPoint, uint32, const BMessage*) {}
void BView::FrameResized(float, float) {}
bool BView::WheelMoved(BPoint, BPoint) {
    return false;
}
bool BView::KeyDown(const kits::KeyPress&) {
    return false;
}

void BView::AddChild(BView* child) {
    children.push_back(child);
    child->parent = this;
    child->widget->setParent(widget.get());
    child->widget->setVisible(!child->hidden);
    if (window)
        child->SetWindow(window);
}

bool BView::RemoveChild(BView* child) {
    if (std::erase(children, child) == 0)
        return false;
    child->parent = nullptr;
    child->SetWindow(nullptr);
    child->widget->setParent(nullptr);
    return true;
}

void BView::SetWindow(BWindow* next) {
    window = next;
    if (next)
        next->AddHandler(this);
    else if (Looper())
        Looper()->RemoveHandler(this);
    if (next)
        AttachedToWindow();
    // Children that a hook has just added are already attached to their window.
    for (BView* child : std::vector<BView*>(children)) {
        if (child->window != next)
            child->SetWindow(next);
    }
}

BView* BView::ChildAt(std::size_t index) const {
    return index < children.size() ? children[index] : nullptr;
}

BView* BView::FindView(std::string_view wanted) {
    if (Name() == wanted)
        return this;
    for (BView* child : children) {
        if (BView* found = child->FindView(wanted))
            return found;
    }
    return nullptr;
}

BRect BView::ConvertFromParent(BRect rect) const {
    return rect.OffsetByCopy(-frame.left, -frame.top);
}

void BView::Place(BRect next) {
    const float dx = next.Width() - frame.Width();
    const float dy = next.Height() - frame.Height();
    frame = next;
    widget->setGeometry(kits::ToQt(frame));
    if (dx == 0 && dy == 0)
        return;
    for (BView* child : children)
        child->FollowParent(dx, dy);
    if (flags & B_FRAME_EVENTS)
        FrameResized(frame.Width(), frame.Height());
}

void BView::FollowParent(float dx, float dy) {
    BRect next = frame;
    if (resizingMode & (B_FOLLOW_RIGHT | B_FOLLOW_LEFT_RIGHT))
        next.right += dx;
    if (resizingMode & B_FOLLOW_RIGHT)
        next.left += dx;
    if (resizingMode & (B_FOLLOW_BOTTOM | B_FOLLOW_TOP_BOTTOM))
        next.bottom += dy;
    if (resizingMode & B_FOLLOW_BOTTOM)
        next.top += dy;
    if (next != frame)
        Place(next);
}

void BView::ResizeTo(float width, float height) {
    Place({frame.left, frame.top, frame.left + width, frame.top + height});
}

void BView::ResizeBy(float x, float y) {
    ResizeTo(frame.Width() + x, frame.Height() + y);
}

void BView::MoveTo(float x, float y) {
    Place(frame.OffsetToCopy(x, y));
}

void BView::MoveBy(float x, float y) {
    Place(frame.OffsetByCopy(x, y));
}

void BView::Hide() {
    hidden = true;
    // Otherwise the toolkit would pass the focus on to another field, and the keys that play notes
    // would type there.
    QWidget* focused = widget->window()->focusWidget();
    if (focused && (focused == widget.get() || widget->isAncestorOf(focused)))
        focused->clearFocus();
    widget->hide();
}

void BView::Show() {
    hidden = false;
    widget->show();
}

void BView::SetViewColor(rgb_color color) {
    viewColor = color;
    Invalidate();
}

void BView::SetFont(const BFont* next, uint32 mask) {
    if (mask == B_FONT_ALL)
        font = *next;
}

void BView::DrawString(std::string_view text) {
    const BPoint start = pen;
    pen.x += StringWidth(text);
    if (QPainter* painter = widget->Painter()) {
        painter->setFont(kits::ToQt(font));
        painter->setPen(kits::ToQt(highColor));
        painter->drawText(QPointF(start.x, start.y), kits::ToQt(text));
    }
}

void BView::DrawString(std::string_view text, BPoint baseline) {
    pen = baseline;
    DrawString(text);
}

std::string BView::CutToFit(std::string text, float room) const {
    if (StringWidth(text) <= room)
        return text;
    const std::string dots = "…";
    /// Where the text can be cut: before each of its UTF-8 characters.
    std::vector<std::size_t> starts;
    for (std::size_t i = 0; i < text.size(); i++) {
        if (kits::BeginsCharacter(text[i]))
            starts.push_back(i);
    }
    const auto fits = [&](std::size_t end) {
        return StringWidth(text.substr(0, end) + dots) <= room;
    };
    const auto first = std::partition_point(starts.begin(), starts.end(), fits);
    return text.substr(0, first == starts.begin() ? 0 : *std::prev(first)) + dots;
}

void BView::StrokeLine(BPoint from, BPoint to, pattern which) {
    pen = to;
    QPainter* painter = widget->Painter();
    if (!painter)
        return;
    // Horizontal and vertical lines are drawn sharp, all others antialiased. Coordinates are those
    // of the pixels' centres.
    const bool straight = from.x == to.x || from.y == to.y;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing, !straight);
    painter->setPen(QPen(kits::ToQt(Color(which)), 1, Qt::SolidLine, Qt::SquareCap));
    if (straight) {
        painter->drawLine(QPointF(from.x, from.y).toPoint(), QPointF(to.x, to.y).toPoint());
    } else {
        painter->translate(0.5, 0.5);
        painter->drawLine(QPointF(from.x, from.y), QPointF(to.x, to.y));
    }
    painter->restore();
}

void BView::StrokeLine(BPoint to, pattern which) {
    StrokeLine(pen, to, which);
}

void BView::FillRect(BRect rect, pattern which) {
    if (QPainter* painter = widget->Painter())
        painter->fillRect(kits::ToQt(rect), kits::ToQt(Color(which)));
}

namespace {

/// Sets a painter up for antialiased drawing in coordinates of pixel centres, and restores it when
/// destroyed.
class Smooth {
  public:
    explicit Smooth(QPainter& painter) : painter(painter) {
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        painter.translate(0.5, 0.5);
    }
    ~Smooth() { painter.restore(); }
    Smooth(const Smooth&) = delete;
    Smooth& operator=(const Smooth&) = delete;

    QPainter* operator->() { return &painter; }

    void Stroke(rgb_color color, float width) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(kits::ToQt(color), width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    }
    void Fill(rgb_color color) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(kits::ToQt(color));
    }

  private:
    QPainter& painter;
};

QPolygonF Polygon(std::span<const BPoint> points) {
    QPolygonF polygon;
    polygon.reserve(static_cast<qsizetype>(points.size()));
    for (const BPoint point : points)
        polygon.append(QPointF(point.x, point.y));
    return polygon;
}

/// Returns the area that the pixels of the rectangle cover.
QRectF AreaOf(BRect rect) {
    return {QPointF(rect.left - 0.5, rect.top - 0.5), QPointF(rect.right + 0.5, rect.bottom + 0.5)};
}

} // namespace

void BView::StrokePath(std::span<const BPoint> points, float width, bool closed) {
    if (!widget->Painter() || points.empty())
        return;
    Smooth painter(*widget->Painter());
    painter.Stroke(highColor, width);
    if (closed)
        painter->drawPolygon(Polygon(points));
    else
        painter->drawPolyline(Polygon(points));
}

void BView::FillPolygon(std::span<const BPoint> points) {
    if (!widget->Painter())
        return;
    Smooth painter(*widget->Painter());
    painter.Fill(highColor);
    painter->drawPolygon(Polygon(points));
}

void BView::FillRoundRect(BRect rect, float radius) {
    if (!widget->Painter())
        return;
    Smooth painter(*widget->Painter());
    painter.Fill(highColor);
    painter->drawRoundedRect(AreaOf(rect), radius, radius);
}

void BView::StrokeRoundRect(BRect rect, float radius, float width) {
    if (!widget->Painter())
        return;
    Smooth painter(*widget->Painter());
    painter.Stroke(highColor, width);
    painter->drawRoundedRect(QRectF(QPointF(rect.left, rect.top), QPointF(rect.right, rect.bottom)),
                             radius, radius);
}

void BView::FillEllipse(BPoint center, float radiusX, float radiusY) {
    if (!widget->Painter())
        return;
    Smooth painter(*widget->Painter());
    painter.Fill(highColor);
    painter->drawEllipse(QPointF(center.x, center.y), radiusX, radiusY);
}

void BView::StrokeEllipse(BPoint center, float radiusX, float radiusY, float width) {
    if (!widget->Painter())
        return;
    Smooth painter(*widget->Painter());
    painter.Stroke(highColor, width);
    painter->drawEllipse(QPointF(center.x, center.y), radiusX, radiusY);
}

void BView::StrokeArc(BPoint center, float radius, float from, float sweep, float width) {
    if (!widget->Painter())
        return;
    Smooth painter(*widget->Painter());
    painter.Stroke(highColor, width);
    // The toolkit's angles are in units of 1/16 degree.
    painter->drawArc(QRectF(center.x - radius, center.y - radius, 2 * radius, 2 * radius),
                     static_cast<int>(std::lround(from * 16)),
                     static_cast<int>(std::lround(sweep * 16)));
}

namespace {

/// Returns an image without alpha with the fourth byte of each pixel set to 255. That byte has no
/// meaning in such an image, but Qt copies it, and in a window that supports transparency, as
/// Wayland's do, it would make the pixels transparent.
QImage Opaque(const QImage& image) {
    if (image.format() != QImage::Format_RGB32)
        return image;
    QImage opaque(image.size(), QImage::Format_RGB32);
    for (int y = 0; y < image.height(); y++) {
        const auto* from = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        std::transform(from, from + image.width(), reinterpret_cast<QRgb*>(opaque.scanLine(y)),
                       [](QRgb pixel) { return pixel | 0xff000000U; });
    }
    return opaque;
}

} // namespace

void BView::DrawBitmap(const BBitmap* bitmap, BRect destination, bool inBlocks) {
    QPainter* painter = widget->Painter();
    if (!painter || !bitmap || !bitmap->IsValid())
        return;
    const bool dense = widget->devicePixelRatioF() > 1 && bitmap->Dense();
    const QImage image = Opaque(kits::ToQt(dense ? *bitmap->Dense() : *bitmap));
    const QRect place = kits::ToQt(destination);
    const QSize size = (QSizeF(place.size()) * widget->devicePixelRatioF()).toSize();
    painter->setRenderHint(QPainter::SmoothPixmapTransform,
                           (inBlocks ? place.size() : size) != image.size());
    painter->drawImage(place, image);
}

float BView::Density() const {
    return static_cast<float>(widget->devicePixelRatioF());
}

void BView::StartAnimation() {
    widget->StartAnimation();
}

void BView::Invalidate() {
    widget->update();
}

void BView::Invalidate(BRect rect) {
    // Rounds outwards, so that partly covered pixels are included. The limit is far beyond any
    // screen and keeps the conversion to int valid.
    const auto whole = [](float edge) {
        return static_cast<int>(std::clamp(edge, -32000.0F, 32000.0F));
    };
    widget->update(QRect(QPoint(whole(std::floor(rect.left)), whole(std::floor(rect.top))),
                         QPoint(whole(std::ceil(rect.right)), whole(std::ceil(rect.bottom)))));
}

void BView::GetMouse(BPoint* where, uint32* buttons, bool) const {
    *where = widget->Pointer();
    *buttons = widget->Buttons();
}

uint32 BView::Modifiers() const {
    return widget->Modifiers();
}

bool BView::IsHeld(char32_t character) {
    return kits::HeldKeys::Instance().IsDown(static_cast<int>(character));
}

int32 BView::Clicks() const {
    return widget->Clicks();
}

void BView::MakeFocus(bool focused) {
    if (focused)
        widget->setFocus();
    else
        widget->clearFocus();
}

bool BView::IsFocus() const {
    return widget->hasFocus();
}

bool BView::IsFocusByKeys() const {
    return IsFocus() && widget->FocusCameByKeys();
}

void BView::SetToolTip(const char* text) {
    toolTip = text ? text : "";
    ShowTip();
}

void BView::SetHelp(std::string_view text) {
    if (text == help)
        return;
    help = text;
    ShowTip();
}

void BView::ShowTip() {
    const QString shown = kits::ToQt(toolTip.empty() ? help : toolTip);
    widget->setToolTip(kits::TipText(shown));
    // Screen readers need not read out a name twice.
    if (QWidget* content = widget->Content())
        content->setAccessibleDescription(shown == content->accessibleName() ? QString() : shown);
}

void BView::SetAccessibleName(std::string_view words) {
    QWidget* content = widget->Content();
    // The content may be a mere container of the control that gets the focus.
    while (content && content->focusProxy())
        content = content->focusProxy();
    (content ? content : widget.get())->setAccessibleName(kits::ToQt(words));
}

void BView::DescriptionChanged() {
    widget->TellChanges();
}
