// SPDX-License-Identifier: GPL-3.0-or-later
// Another program to drag from: drag_source [--text] WHAT shows a small window "Drag source", from
// which a file, or a text, can be dragged once. It prints "begun" when the drag starts, "taken"
// when it is over a place that accepts it, and finally the result: "copied", "moved" or "refused".
#include <QApplication>
#include <QDrag>
#include <QMimeData>
#include <QMouseEvent>
#include <QUrl>
#include <QWidget>
#include <cstdio>

namespace {

void Say(const char* word) {
    std::puts(word);
    std::fflush(stdout);
}

class Source : public QWidget {
  public:
    Source(bool isText, QString what) : isText(isText), what(std::move(what)) {}

  protected:
    void mouseMoveEvent(QMouseEvent*) override {
        auto* drag = new QDrag(this);
        auto* data = new QMimeData;
        if (isText)
            data->setText(what);
        else
            data->setUrls({QUrl::fromLocalFile(what)});
        drag->setMimeData(data);
        connect(drag, &QDrag::actionChanged, this, [](Qt::DropAction action) {
            if (action == Qt::CopyAction)
                Say("taken");
        });
        Say("begun");
        const Qt::DropAction done = drag->exec(Qt::CopyAction | Qt::MoveAction, Qt::MoveAction);
        Say(done == Qt::CopyAction ? "copied" : done == Qt::IgnoreAction ? "refused" : "moved");
    }

  private:
    const bool isText;
    const QString what;
};

} // namespace

int main(int count, char** arguments) {
    QApplication application(count, arguments);
    const QStringList words = QApplication::arguments();
    Source source(words[1] == "--text", words.last());
    source.setWindowTitle("Drag source");
    source.setGeometry(1300, 30, 120, 60);
    source.show();
    return QApplication::exec();
}
