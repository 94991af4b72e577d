#pragma once

#include "core/TqExport.h"
#include "graphics/device/wsiTypes.h"

#include <QBrush>
#include <QPen>

/// An index into the handle table; stock handles are the fixed small values below.
using wsiHandle = int;

/// StockObject, Pen and Brush: the pen and brush handles of the printer and metafile paths.
/// Handles index one portable table; a handful of stock entries are shared and never deleted,
/// every other entry belongs to the wrapper that created it and is freed by its destructor.
class TQ_EXPORT StockObject {
public:
    /// The shared handles, which are never freed; StockCount asks for an owned handle.
    enum Stock : wsiHandle {
        BlackPen = 0,
        WhitePen,
        BlackBrush,
        DarkGrayBrush,
        GrayBrush,
        LightGrayBrush,
        WhiteBrush,
        StockCount
    };

    StockObject(const StockObject&) = delete;
    StockObject& operator=(const StockObject&) = delete;
    /// Frees an owned handle; a stock handle stays.
    virtual ~StockObject();

    /// The handle, an index into the table; valid while the wrapper lives.
    wsiHandle handle() const { return m_handle; }
    /// True for a shared stock handle, false for one this wrapper owns.
    bool isStock() const { return m_isStock; }

    ///@{
    /// What a handle draws with. An unknown or freed handle gives Qt's default pen (solid
    /// black, width 1) or no brush.
    static QPen penOf(wsiHandle handle);
    static QBrush brushOf(wsiHandle handle);
    ///@}
    /// How many owned (non-stock) handles are alive.
    static int ownedCount();

protected:
    /// Takes the stock handle stock, or, when stock is StockCount, creates an owned handle for
    /// a pen (isPen; colour, style and width) or a brush (colour only).
    StockObject(Stock stock, bool isPen, wsiColor color, wsiPenStyle style, long width);

private:
    wsiHandle m_handle;
    bool m_isStock;
};

/// A pen handle of the printer and metafile paths.
class TQ_EXPORT Pen : public StockObject {
public:
    /// Style 0 or 1 with width 0 takes the stock black pen for colour 3 and the stock white pen
    /// for colour 18 (a dashed hairline thus draws solid, as it always has); any other pen is
    /// created and owned.
    Pen(wsiColor color, wsiPenStyle style, long width);
    /// The handle used when no pen is selected: the stock black pen.
    static wsiHandle defaultPen() { return BlackPen; }
};

/// A solid brush handle of the printer and metafile paths.
class TQ_EXPORT Brush : public StockObject {
public:
    /// Colours 3, 4, 5, 6 and 18 take the stock black, dark grey, grey, light grey and white
    /// brushes; any other brush is created and owned.
    explicit Brush(wsiColor color);
    /// The handle used when no brush is selected: the stock white brush.
    static wsiHandle defaultBrush() { return WhiteBrush; }
};
