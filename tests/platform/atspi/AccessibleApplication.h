#pragma once

#include "tests/support/SessionBus.h"

#include <gtest/gtest.h>

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusVirtualObject>

#include <atomic>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace vocalith::test {

/// An accessibility bus with one application on it, which a test makes up object by object: also with what real
/// toolkits do only when they are broken.
class AccessibleApplication {
public:
    struct Object {
        QString path;
        std::set<unsigned> states{kShowing};
        std::vector<QString> children{};
        unsigned role = 0;
        QString text{}; ///< its text interface is there where this is not null
        int caret = 0;
    };
    static constexpr unsigned kActive = 1;
    static constexpr unsigned kEditable = 7;
    static constexpr unsigned kFocused = 12;
    static constexpr unsigned kShowing = 25;
    static constexpr unsigned kPassword = 40;

    /// The first object is the application's only window.
    explicit AccessibleApplication(std::vector<Object> objects);
    ~AccessibleApplication();

    const std::string& busAddress() const { return m_bus.address(); }
    /// Whether that was asked of the object.
    bool wasAsked(const QString& path, const QString& member) const;

    std::atomic<bool> isEnabled = false; ///< of the desktop's accessibility status
    std::atomic<bool> hasScreenReader = false;
    QString toolkit = "gtk";
    std::optional<bool> insertion = true; ///< what `InsertText` says; it refuses without an answer
    bool insertsInTruth = true;
    bool answersNonsense = false;
    std::vector<int> insertedLengths; ///< as they were given

private:
    class Tree;
    std::optional<QVariantList> answer(const QString& path, const BusService::Call& call);
    std::optional<QVariantList> answerProperty(Object& object, const QString& name) const;
    std::optional<QVariantList> answerStatus(const BusService::Call& call);
    std::optional<QVariantList> insert(Object& object, const QVariantList& arguments);
    QVariant references(const std::vector<QString>& paths) const;

    std::vector<Object> m_objects;
    std::vector<std::pair<QString, QString>> m_asked;
    SessionBus m_bus;
    QDBusConnection m_connection;
    std::unique_ptr<Tree> m_tree;
    BusService m_launcher;
    BusService m_registry;
};

} // namespace vocalith::test
