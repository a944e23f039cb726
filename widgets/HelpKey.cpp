#include "widgets/HelpKey.h"

#include <QShortcut>
#include <QVariant>
#include <QWidget>

namespace Corvadine {

namespace {

constexpr const char* TopicProperty = "CorvadineHelpTopic";

} // namespace

void SetHelpTopic(QWidget& control, int topic)
{
    control.setProperty(TopicProperty, topic);
}

void AnswerHelpKey(QWidget& window, THelpRequest help)
{
    auto* key = new QShortcut(Qt::Key_F1, &window);
    QObject::connect(key, &QShortcut::activated, &window, [&window, help = std::move(help)] {
        const QWidget* control = window.focusWidget() != nullptr ? window.focusWidget() : &window;
        while (control != &window && !control->property(TopicProperty).isValid())
            control = control->parentWidget();
        if (const QVariant topic = control->property(TopicProperty); topic.isValid() && help)
            help(topic.toInt());
    });
}

} // namespace Corvadine
