#ifndef QOVRESPONSE_H
#define QOVRESPONSE_H

#include <QString>
#include <QVariant>

#include <orvane/db.h>
#include <ovqt_export.h>

class QDbptr;
class QOvConnection;

/* The answer to one named request: the value is the variant itself; beside it stand a type, an error
 * text, a database pointer and the connection that the answer came through.
 *
 * The type and the value are independent: a response of type 3 usually carries a value too. Of type and
 * error the last call of setError and setDbptr wins; the error text stays. A response is held through a
 * std::shared_ptr and may outlive the request. */
class OVQT_EXPORT QOvResponse : public QVariant
{
public:
    /* What getOvResponseType answers. */
    enum ResponseType {
        Plain = 0,          /* nothing recorded */
        Error = 1,          /* errorString() tells what went wrong */
        Value = 2,          /* made directly from a text or an integer */
        DatabasePointer = 3 /* getDbptr() is meaningful */
    };

    QOvResponse();
    QOvResponse(const QString &text);
    QOvResponse(int number);

    int getOvResponseType() const;

    /* Stores the text and makes the response an error. */
    void setError(QString text);
    /* True exactly when the type is Error. */
    bool errorOccurred() const;
    QString errorString() const;

    /* The connection is not owned and must outlive the calls of getQDbptr. */
    void setConnection(QOvConnection *connection);

    /* Stores the pointer and sets type DatabasePointer, also after an error. */
    void setDbptr(Dbptr dbptr);
    Dbptr getDbptr() const;

    /* A new handle without a parent, the caller's, on the stored connection and pointer. Throws what the
     * handle's constructor throws when no connection was set. */
    QDbptr *getQDbptr() const;

private:
    QOvConnection *m_connection = nullptr;
    QString m_errorText;
    Dbptr m_dbptr;
    qint32 m_type;
};

#endif
