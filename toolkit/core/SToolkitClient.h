/// \file
/// SToolkitClient and PdStringEntry: the record by which a client module registers with the
/// toolkit, and the (name, text) entries of a client's string table.
#pragma once

class appiApplication;

/// One entry of a string table: the symbolic id ("IDS_CANTOPEN") and the text, which may hold
/// printf placeholders. A table is an array of these; entry 0 is a header that is never
/// returned, entry k is the string with id firstStringId + k - 1, and a pair of null pointers
/// closes the array.
struct PdStringEntry {
    /// The symbolic id, a static string; null in the closing entry.
    const char* name;
    /// The text, a static string; null in the closing entry.
    const char* text;
};

/// The registration record of a client module. The toolkit copies what it needs, so the record
/// may be a temporary. Only the application client's factory, delete, start, licensing and
/// command callbacks are taken; the shutdown hook is taken from every client.
struct SToolkitClient {
    char isApplication; ///< non-zero for the one client that is the application
    char reservedFlag;  ///< written as 0 by the toolkit's own record, never read
    /// Run at shutdown in registration order; null for none. Taken from every client.
    void (*shutDownFunc)();
    /// Creates the application object, which the toolkit keeps until shutdown.
    appiApplication* (*createApplicationFunc)();
    /// Destroys the application object.
    void (*deleteApplicationFunc)();
    /// Runs the application; the two trailing ints are passed through unchanged. Its result
    /// is what TarqToolkit::startApplication returns.
    int (*startApplicationFunc)(int argc, char** argv, int, int);
    ///@{
    /// The licensing callbacks, which the toolkit only forwards to: the descriptions of the
    /// licensed features (text the application keeps), and one protection log line about a
    /// feature.
    const char* (*licenseFeaturesFunc)();
    void (*protectionLogFunc)(const char* feature);
    long (*executeCommandFunc)(const char* command);
    ///@}
    ///@{
    /// Read only from a non-application client: its variable that receives the application
    /// pointer when the application is created.
    appiApplication** appSlot;
    int firstStringId; ///< 0: the client has no string table
    PdStringEntry* stringTable;
    ///@}
};
