#pragma once

#include "core/Collections.h"
#include "core/TqExport.h"
#include "core/TqObject.h"

#include <cstdarg>
#include <memory>

enum MessageSeverity {
    SEVERITY_FATAL = 0,
    SEVERITY_ERROR = 1,
    SEVERITY_WARNING = 2,
    SEVERITY_NOTE = 3,
};

/// The kind of object a message concerns. The values beyond "none" belong to the
/// application, which passes its own through unchanged.
enum MessageObjectType : int {
    MESSAGE_OBJECT_NONE = 0,
};

/// ErrorMessage: a message with a severity, optionally about an object (such as a line of a
/// file), formatted with printf rules.
class TQ_EXPORT ErrorMessage : public TqObject {
public:
    ///@{
    /// Texts are formatted into a 1024-byte area: a longer text is cut at 1023 characters.
    /// The int forms take the format from the merged string table (PdToolkit::loadString).
    /// Without a severity a message is an error.
    explicit ErrorMessage(MessageSeverity severity);
    ErrorMessage(MessageSeverity severity, MessageObjectType objectType, void* object, int number,
                 const char* format, ...) __attribute__((format(printf, 6, 7)));
    ErrorMessage(MessageSeverity severity, MessageObjectType objectType, void* object, int number,
                 int formatId, ...);
    ErrorMessage(MessageSeverity severity, const char* format, ...)
        __attribute__((format(printf, 3, 4)));
    ErrorMessage(MessageSeverity severity, int formatId, ...);
    explicit ErrorMessage(const char* format, ...) __attribute__((format(printf, 2, 3)));
    explicit ErrorMessage(int formatId, ...);
    ErrorMessage(const ErrorMessage& other);
    ErrorMessage& operator=(const ErrorMessage& other);
    ~ErrorMessage() override;
    ///@}

    /// Replaces the text, formatted from the string table entry formatId.
    void setMessage(int formatId, ...);

    ///@{
    /// The text, owned by the message ("" before any was set).
    const char* message() const { return m_text ? m_text.get() : ""; }
    MessageSeverity severity() const { return m_severity; }
    MessageObjectType objectType() const { return m_objectType; }
    void* object() const { return m_object; }
    int number() const { return m_number; }
    ///@}
    ///@{
    /// An application's own word about the message; 0 after construction.
    long userWord() const { return m_userWord; }
    void setUserWord(long word) { m_userWord = word; }
    ///@}

    /// True for fatal errors and errors.
    bool isError() const { return m_severity <= SEVERITY_ERROR; }
    ///@{
    /// "FATAL ERROR", "ERROR", "WARNING" or "NOTE"; "ERROR" for any other value.
    static const char* severityString(int severity);
    const char* severityString() const { return severityString(m_severity); }
    ///@}

    /// True if a message with the same text is in the list; with sameSeverity set, its
    /// severity must match too.
    bool duplicateExists(const OC_<ErrorMessage>& list, bool sameSeverity) const;

    /// "<SEVERITY>: <text>".
    std::ostream& printOn(std::ostream& out) const override;

private:
    void format(const char* format, va_list arguments);
    void formatFromTable(int formatId, va_list arguments);

    std::unique_ptr<char[]> m_text;
    long m_userWord = 0;
    MessageSeverity m_severity = SEVERITY_ERROR;
    MessageObjectType m_objectType = MESSAGE_OBJECT_NONE;
    void* m_object = nullptr;
    int m_number = 0;
};
