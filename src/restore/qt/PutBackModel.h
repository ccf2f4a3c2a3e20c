#pragma once
#include <QHash>
#include <QObject>
#include <QString>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>

#include <vector>

#include "foundation/Uuid.h"

namespace bv {

struct FeatureContext;
struct ActionLogEntry;

// History's "Put back": which entries can still come back from the Trash, and putting them
// back. Whether an item still stands in the Trash is looked up on a worker thread whenever
// the log changes, on the minute tick and when History asks; a newer look voids an older
// one. Putting back runs on a worker too, one at a time; its entries go into History
// through the log, and what happened is said in `message`.
class PutBackModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Put back belongs to AppModel.")
    // Entry id to its state (the State values; absent: None), for History's rows.
    Q_PROPERTY(QVariantMap states READ states NOTIFY statesChanged)
    // Entry id to "Put back all N items", on the newest entry of each clean that has two or
    // more items still in the Trash.
    Q_PROPERTY(QVariantMap runButtons READ runButtons NOTIFY statesChanged)
    Q_PROPERTY(bool busy READ busy NOTIFY busyChanged)
    // What the last put-back did, or why it could not; empty when there is nothing to say.
    Q_PROPERTY(QString message READ message NOTIFY messageChanged)
    Q_PROPERTY(bool messageIsRefusal READ messageIsRefusal NOTIFY messageChanged)
    Q_PROPERTY(QString buttonText READ buttonText CONSTANT)
    Q_PROPERTY(QString notInTrashText READ notInTrashText CONSTANT)
    Q_PROPERTY(QString doneText READ doneText CONSTANT)

public:
    // The values of stateOf, as QML sees them.
    enum State { None = 0, Available = 1, NotInTrash = 2, Done = 3 };
    Q_ENUM(State)

    explicit PutBackModel(FeatureContext& context, QObject* parent = nullptr);

    // The state of the History entry with this id; None until the first look is back.
    Q_INVOKABLE int stateOf(const QString& id) const;
    // "Put back all N items" on the newest entry of a clean with two or more items still in
    // the Trash; empty everywhere else.
    Q_INVOKABLE QString runButtonText(const QString& id) const;
    // Puts back the one entry, or every entry of its clean still in the Trash. Does nothing
    // while a put-back is under way or when the entry can't be put back.
    Q_INVOKABLE void putBack(const QString& id);
    Q_INVOKABLE void putBackRun(const QString& id);
    // Looks at the Trash again (History calls this when it is shown).
    Q_INVOKABLE void refresh();
    Q_INVOKABLE void dismissMessage();

    [[nodiscard]] QVariantMap states() const { return statesMap_; }
    [[nodiscard]] QVariantMap runButtons() const { return runButtons_; }
    [[nodiscard]] bool busy() const { return busy_; }
    [[nodiscard]] QString message() const { return message_; }
    [[nodiscard]] bool messageIsRefusal() const { return messageIsRefusal_; }
    [[nodiscard]] static QString buttonText() { return QStringLiteral("Put back"); }
    [[nodiscard]] static QString notInTrashText();
    [[nodiscard]] static QString doneText() { return QStringLiteral("Put back already"); }

signals:
    void statesChanged();
    void busyChanged();
    void messageChanged();
    // A put-back finished (whatever came of it).
    void finished();

private:
    void start(std::vector<ActionLogEntry> entries);
    void setMessage(const QString& text, bool refusal);
    [[nodiscard]] std::vector<QString> runMembers(const QString& id) const;

    FeatureContext& ctx_;
    QHash<QString, int> states_;
    Uuid token_;
    QVariantMap statesMap_;
    QVariantMap runButtons_;
    bool busy_ = false;
    QString message_;
    bool messageIsRefusal_ = false;
};

} // namespace bv
