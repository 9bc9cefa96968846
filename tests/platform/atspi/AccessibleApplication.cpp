#include "tests/platform/atspi/AccessibleApplication.h"

#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusMetaType>
#include <QtDBus/QDBusObjectPath>
#include <QtDBus/QDBusVariant>

#include <algorithm>

namespace vocalith::test {

struct Reference {
    QString service;
    QDBusObjectPath path;
};

QDBusArgument& operator<<(QDBusArgument& argument, const Reference& reference)
{
    argument.beginStructure();
    argument << reference.service << reference.path;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, Reference& reference)
{
    argument.beginStructure();
    argument >> reference.service >> reference.path;
    argument.endStructure();
    return argument;
}

namespace {

const QString kRoot = "/org/a11y/atspi/accessible/root";

QVariant stateWords(const std::set<unsigned>& states)
{
    QList<unsigned> words{0, 0};
    for (const unsigned state : states)
        words[state / 32] |= 1U << (state % 32);
    return QVariant::fromValue(words);
}

QVariant wrapped(const QVariant& value)
{
    return QVariant::fromValue(QDBusVariant(value));
}

} // namespace

class AccessibleApplication::Tree final : public QDBusVirtualObject {
public:
    explicit Tree(AccessibleApplication& owner) : m_owner(owner) {}

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override
    {
        const BusService::Call call{message.member(), message.arguments(), message.service()};
        m_owner.m_asked.emplace_back(message.path(), message.member());
        const auto answer = m_owner.answer(message.path(), call);
        return connection.send(answer ? message.createReply(*answer)
                                      : message.createErrorReply(QStringLiteral("org.test.Refused"),
                                                                 QStringLiteral("it was told to refuse")));
    }

private:
    AccessibleApplication& m_owner;
};

AccessibleApplication::AccessibleApplication(std::vector<Object> objects)
    : m_objects(std::move(objects)), m_connection(connectTo(m_bus.address())), m_tree(std::make_unique<Tree>(*this)),
      m_launcher(m_bus.address(), {"org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", {}},
                 [this](const auto& call) { return answerStatus(call); }),
      m_registry(m_bus.address(), {"org.a11y.atspi.Registry", kRoot, "org.a11y.atspi.Accessible", {}},
                 [this](const auto&) { return QVariantList{references({kRoot})}; })
{
    qDBusRegisterMetaType<Reference>();
    qDBusRegisterMetaType<QList<Reference>>();
    EXPECT_TRUE(m_connection.registerVirtualObject("/", m_tree.get(), QDBusConnection::SubPath));
}

AccessibleApplication::~AccessibleApplication()
{
    m_connection.unregisterObject("/", QDBusConnection::UnregisterTree);
    QDBusConnection::disconnectFromBus(m_connection.name());
}

bool AccessibleApplication::wasAsked(const QString& path, const QString& member) const
{
    return std::ranges::find(m_asked, std::pair(path, member)) != m_asked.end();
}

QVariant AccessibleApplication::references(const std::vector<QString>& paths) const
{
    QList<Reference> references;
    for (const auto& path : paths)
        references.append({m_connection.baseService(), QDBusObjectPath(path)});
    return QVariant::fromValue(references);
}

std::optional<QVariantList> AccessibleApplication::answerStatus(const BusService::Call& call)
{
    if (call.member == "GetAddress")
        return QVariantList{QString::fromStdString(m_bus.address())};
    const bool isAboutReader = call.arguments.value(1).toString() == "ScreenReaderEnabled";
    if (call.member == "Get")
        return QVariantList{wrapped(isAboutReader ? hasScreenReader.load() : isEnabled.load())};
    isEnabled = call.arguments.value(2).value<QDBusVariant>().variant().toBool();
    return QVariantList();
}

std::optional<QVariantList> AccessibleApplication::answer(const QString& path, const BusService::Call& call)
{
    if (answersNonsense)
        return QVariantList{QString("nonsense")};
    if (path == kRoot)
        return QVariantList{call.member == "Get" ? wrapped(toolkit) : references({m_objects.front().path})};
    const auto found = std::ranges::find(m_objects, path, &Object::path);
    if (found == m_objects.end())
        return std::nullopt;
    if (call.member == "GetState")
        return QVariantList{stateWords(found->states)};
    if (call.member == "GetChildren")
        return QVariantList{references(found->children)};
    if (call.member == "GetRole")
        return QVariantList{found->role};
    if (call.member == "GetInterfaces")
        return QVariantList{found->text.isNull() ? QStringList()
                                                 : QStringList{"org.a11y.atspi.Text", "org.a11y.atspi.EditableText"}};
    if (call.member == "Get")
        return answerProperty(*found, call.arguments.value(1).toString());
    if (call.member == "GetNSelections")
        return QVariantList{0};
    if (call.member == "GetText")
        return QVariantList{found->text.mid(call.arguments.value(0).toInt(),
                                            call.arguments.value(1).toInt() - call.arguments.value(0).toInt())};
    return call.member == "InsertText" ? insert(*found, call.arguments) : std::nullopt;
}

std::optional<QVariantList> AccessibleApplication::answerProperty(Object& object, const QString& name) const
{
    if (name == "CharacterCount")
        return QVariantList{wrapped(static_cast<int>(object.text.size()))};
    if (name == "CaretOffset")
        return QVariantList{wrapped(object.caret)};
    return QVariantList{wrapped(QString("name of ") + object.path)};
}

std::optional<QVariantList> AccessibleApplication::insert(Object& object, const QVariantList& arguments)
{
    insertedLengths.push_back(arguments.value(2).toInt());
    if (!insertion)
        return std::nullopt;
    if (*insertion && insertsInTruth)
        object.text.insert(arguments.value(0).toInt(), arguments.value(1).toString());
    return QVariantList{*insertion};
}

} // namespace vocalith::test
