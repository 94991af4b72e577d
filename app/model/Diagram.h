/// Diagram: the timing diagram a hardware designer edits and exports, a toolkit Model whose
/// dependents (views, command servers) hear of every change made through it.
///
/// Building a diagram (what a reader of simulation data does):
///
///     Diagram diagram;
///     diagram.setTimeUnit(TimeUnit::ns);
///     Signal& clk = diagram.addSignal("top.clk", SignalKind::Clock);
///     (void)clk.setClock({.period = 10});
///     Signal& data = diagram.addSignal("top.data", SignalKind::Bus, 8, "Bus");
///     (void)data.appendBinary(0, "xxxxxxxx");
///     (void)data.appendChange(20, BigInt(0xA5));
///     diagram.changed(aspectContents);   // once, when the reader is done
///
/// Edits through a Signal& (its changes, format, clock) notify nobody: whoever makes them
/// calls changed() once afterwards. Every Diagram operation that changes it notifies itself.
#pragma once

#include "model/Signal.h"
#include "model/Time.h"

#include "core/Model.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

/// The aspects a Diagram sends beside aspectAll and aspectContents (changes of signals).
enum DiagramAspect : int {
    aspectSignals = aspectUser + 1,     ///< signals added, removed, renamed or reordered
    aspectDecorations = aspectUser + 2, ///< arrows, markers, annotations, gaps, grid, title
    aspectTimeRange = aspectUser + 3,   ///< time unit or span
};

/// One end of an arrow: an edge of a signal at a time.
struct EdgeRef {
    std::string signal;
    Time time = 0;
    bool operator==(const EdgeRef&) const = default;
};

/// How an arrow runs from one end to the other.
enum class ArrowShape : int {
    Straight = 0,
    Curved = 1, ///< an S-curve leaving and reaching its ends level
};

/// Which ends of an arrow carry a head.
enum class ArrowHeads : int { None = 0, End = 1, Start = 2, Both = 3 };

/// An arrow from one edge to another (a setup or hold relation), with a label.
struct Arrow {
    EdgeRef from;
    EdgeRef to;
    std::string label;
    ArrowShape shape = ArrowShape::Straight;
    ArrowHeads heads = ArrowHeads::End;
    bool operator==(const Arrow&) const = default;
};

/// A vertical line across the diagram at a time, with a label above it.
struct Marker {
    Time time = 0;
    std::string label;
    bool operator==(const Marker&) const = default;
};

/// Free text at a time, on a signal's row or (with no signal) above the waveforms.
struct Annotation {
    Time time = 0;
    std::string signal;
    std::string text;
    bool operator==(const Annotation&) const = default;
};

/// A break in time at `time`: drawn as a pair of slanted strokes across one signal, or across
/// every signal and the axis when `signal` is empty.
struct Gap {
    Time time = 0;
    std::string signal;
    bool operator==(const Gap&) const = default;
};

/// Vertical grid lines every `spacing` (0: the axis's own tick spacing).
struct Grid {
    bool visible = false;
    Time spacing = 0;
    bool operator==(const Grid&) const = default;
};

/// A section of a .tqd file this program does not know, kept verbatim to be written back.
struct ForeignSection {
    std::string name;
    /// The bracketed list as it was in the file, brackets included.
    std::string text;
    bool operator==(const ForeignSection&) const = default;
};

class Diagram : public Model {
public:
    Diagram() = default;
    Diagram(const Diagram&) = delete;
    Diagram& operator=(const Diagram&) = delete;
    ~Diagram() override;

    /// Takes other's contents (not its dependents) and tells this diagram's dependents
    /// aspectAll; other is left empty. What a reader does once a whole file has been read, so
    /// that a failed read leaves the diagram as it was.
    void assign(Diagram&& other);
    /// Drops everything: no signals, decorations or foreign sections, unit ns, no span.
    void clear();
    /// True when every item is the same (dependents aside).
    bool sameContents(const Diagram& other) const;

    // --- Title and time ------------------------------------------------------------------------
    const std::string& title() const { return m_title; }
    void setTitle(std::string title);
    TimeUnit timeUnit() const { return m_unit; }
    /// Sets the unit in which every time of the diagram counts. Existing times keep their
    /// counts: a reader sets the unit before it adds anything.
    void setTimeUnit(TimeUnit unit);
    /// The span shown by default. Without one set (end <= start) it is from 0 (or the earliest
    /// change, if negative) to the latest change or decoration, at least one time unit.
    Time spanStart() const;
    Time spanEnd() const;
    bool hasExplicitSpan() const { return m_spanEnd > m_spanStart; }
    /// Sets the span; end <= start returns to the computed one.
    void setSpan(Time start, Time end);

    // --- Signals -------------------------------------------------------------------------------
    std::size_t signalCount() const { return m_signals.size(); }
    Signal& signal(std::size_t index) { return *m_signals[index]; }
    const Signal& signal(std::size_t index) const { return *m_signals[index]; }
    /// The index of the signal named name, or Signal::npos.
    std::size_t findSignal(const std::string& name) const;
    /// Appends a new signal (of width bits for a bus) in group (empty: none; a new group name
    /// is added to the groups) and returns it; the reference stays valid until the signal is
    /// removed. A name already in use is the caller's error: readers and commands check
    /// findSignal first (asserted).
    Signal& addSignal(const std::string& name, SignalKind kind, unsigned width = 1,
                      const std::string& group = std::string());
    /// Removes the signal at index and the arrows, annotations and gaps that refer to it.
    void removeSignal(std::size_t index);
    /// Renames the signal at index, and the references to it; false if name is taken or empty.
    [[nodiscard]] bool renameSignal(std::size_t index, const std::string& name);
    /// Moves the signal at index to position `to` (clamped to the last position).
    void moveSignal(std::size_t index, std::size_t to);

    // --- Groups --------------------------------------------------------------------------------
    /// The group names in the order they were added.
    const std::vector<std::string>& groups() const { return m_groups; }
    /// Adds a group name unless it is there already.
    void addGroup(const std::string& name);

    // --- Decorations ---------------------------------------------------------------------------
    const std::vector<Arrow>& arrows() const { return m_arrows; }
    void addArrow(const Arrow& arrow);
    /// False when there is no arrow at index.
    [[nodiscard]] bool removeArrow(std::size_t index);
    const std::vector<Marker>& markers() const { return m_markers; }
    void addMarker(const Marker& marker);
    [[nodiscard]] bool removeMarker(std::size_t index);
    const std::vector<Annotation>& annotations() const { return m_annotations; }
    void addAnnotation(const Annotation& annotation);
    [[nodiscard]] bool removeAnnotation(std::size_t index);
    const std::vector<Gap>& gaps() const { return m_gaps; }
    void addGap(const Gap& gap);
    [[nodiscard]] bool removeGap(std::size_t index);
    const Grid& grid() const { return m_grid; }
    void setGrid(const Grid& grid);

    /// Sections of the file this diagram was read from that this program does not know; they
    /// are written back after the diagram's own.
    const std::vector<ForeignSection>& foreignSections() const { return m_foreign; }
    void addForeignSection(ForeignSection section) { m_foreign.push_back(std::move(section)); }

    /// Changes stored over all signals (clock edges not counted).
    std::size_t totalChanges() const;
    /// Bus changes that show text, over all signals.
    std::size_t totalTexts() const;

private:
    void renameReferences(const std::string& from, const std::string& to);

    std::string m_title;
    TimeUnit m_unit = TimeUnit::ns;
    Time m_spanStart = 0;
    Time m_spanEnd = 0;
    std::vector<std::unique_ptr<Signal>> m_signals;
    std::vector<std::string> m_groups;
    std::vector<Arrow> m_arrows;
    std::vector<Marker> m_markers;
    std::vector<Annotation> m_annotations;
    std::vector<Gap> m_gaps;
    Grid m_grid;
    std::vector<ForeignSection> m_foreign;
    // Names to indices, rebuilt on the first look-up after a removal or a move; a reader of a
    // dump with thousands of signals looks every name up once.
    mutable std::unordered_map<std::string, std::size_t> m_index;
    mutable bool m_indexStale = false;
};
