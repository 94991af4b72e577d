#pragma once

#include "core/TqExport.h"
#include "core/platform/piModule.h"

#include <QString>

struct PdStringEntry;
struct SToolkitClient;

/// PdToolkit: the merged, id-addressed table of user-visible strings built from the clients'
/// string tables, and the module handles of the application and the toolkit.
class TQ_EXPORT PdToolkit {
public:
    /// Adds the client's string range, ordered by first id; a range with the same first id as
    /// an existing one goes after it (and so hides it). An application client resets both
    /// module handles.
    static void registerToolkitClient(SToolkitClient* client);

    /// The entry of a string id, or null when no range covers it. A range ends only where the
    /// next begins: an id past the end of a client's table but below the next client's first
    /// id yields an entry beyond that table, so each client's id block must end just before
    /// the next client's first id.
    static PdStringEntry* getStringEntry(int id);
    /// The text of a string id in the next static ring buffer, or the constant "" (not a ring
    /// buffer) for an unknown id. The ring advances in both cases.
    static char* loadString(int id);
    /// The text of a string id, or "" for an unknown id.
    static QString loadQString(int id);

    ///@{
    /// The module handles of the application and of the toolkit, or null: the toolkit's is
    /// recorded when the library loads, and an application client's registration clears both.
    static HINSTANCE appHINST();
    static HINSTANCE kitHINST();
    static void setKitHINST(HINSTANCE handle);
    ///@}

    /// Frees the range list.
    static void shutDown();
};
