#include "model/Diagram.h"

#include <algorithm>
#include <cassert>

Diagram::~Diagram() = default;

void Diagram::assign(Diagram&& other) {
    m_title = std::move(other.m_title);
    m_unit = other.m_unit;
    m_spanStart = other.m_spanStart;
    m_spanEnd = other.m_spanEnd;
    m_signals = std::move(other.m_signals);
    m_groups = std::move(other.m_groups);
    m_arrows = std::move(other.m_arrows);
    m_markers = std::move(other.m_markers);
    m_annotations = std::move(other.m_annotations);
    m_gaps = std::move(other.m_gaps);
    m_grid = other.m_grid;
    m_foreign = std::move(other.m_foreign);
    m_indexStale = true;
    other.clear();
    changed(aspectAll);
}

void Diagram::clear() {
    m_title.clear();
    m_unit = TimeUnit::ns;
    m_spanStart = m_spanEnd = 0;
    m_signals.clear();
    m_groups.clear();
    m_arrows.clear();
    m_markers.clear();
    m_annotations.clear();
    m_gaps.clear();
    m_grid = Grid();
    m_foreign.clear();
    m_index.clear();
    m_indexStale = false;
}

bool Diagram::sameContents(const Diagram& other) const {
    if (m_signals.size() != other.m_signals.size())
        return false;
    for (std::size_t i = 0; i < m_signals.size(); ++i) {
        if (!(*m_signals[i] == *other.m_signals[i]))
            return false;
    }
    return m_title == other.m_title && m_unit == other.m_unit && m_spanStart == other.m_spanStart &&
           m_spanEnd == other.m_spanEnd && m_groups == other.m_groups &&
           m_arrows == other.m_arrows && m_markers == other.m_markers &&
           m_annotations == other.m_annotations && m_gaps == other.m_gaps &&
           m_grid == other.m_grid && m_foreign == other.m_foreign;
}

void Diagram::setTitle(std::string title) {
    m_title = std::move(title);
    changed(static_cast<Aspect>(aspectDecorations));
}

void Diagram::setTimeUnit(TimeUnit unit) {
    m_unit = unit;
    changed(static_cast<Aspect>(aspectTimeRange));
}

Time Diagram::spanStart() const {
    if (hasExplicitSpan())
        return m_spanStart;
    Time start = 0;
    for (const auto& signal : m_signals) {
        if (signal->changeCount() > 0)
            start = std::min(start, signal->changeTime(0));
    }
    return start;
}

Time Diagram::spanEnd() const {
    if (hasExplicitSpan())
        return m_spanEnd;
    Time end = 0;
    for (const auto& signal : m_signals) {
        end = std::max(end, signal->lastChangeTime());
        if (signal->kind() == SignalKind::Clock)
            end = std::max(end, signal->clock().phase + 4 * signal->clock().period);
    }
    for (const Arrow& arrow : m_arrows)
        end = std::max({end, arrow.from.time, arrow.to.time});
    for (const Marker& marker : m_markers)
        end = std::max(end, marker.time);
    for (const Annotation& annotation : m_annotations)
        end = std::max(end, annotation.time);
    // The last value deserves some room of its own: a tenth of the span.
    const Time start = spanStart();
    end += (end - start) / 10;
    return std::max(end, start + 1);
}

void Diagram::setSpan(Time start, Time end) {
    m_spanStart = end > start ? start : 0;
    m_spanEnd = end > start ? end : 0;
    changed(static_cast<Aspect>(aspectTimeRange));
}

std::size_t Diagram::findSignal(const std::string& name) const {
    if (m_indexStale) {
        m_index.clear();
        for (std::size_t i = 0; i < m_signals.size(); ++i)
            m_index.emplace(m_signals[i]->name(), i);
        m_indexStale = false;
    }
    const auto it = m_index.find(name);
    return it == m_index.end() ? Signal::npos : it->second;
}

Signal& Diagram::addSignal(const std::string& name, SignalKind kind, unsigned width,
                           const std::string& group) {
    assert(findSignal(name) == Signal::npos && "signal names are unique in a diagram");
    m_signals.push_back(std::make_unique<Signal>(name, kind, width));
    if (!m_indexStale)
        m_index.emplace(name, m_signals.size() - 1);
    if (!group.empty()) {
        m_signals.back()->setGroup(group);
        addGroup(group);
    }
    changed(static_cast<Aspect>(aspectSignals));
    return *m_signals.back();
}

void Diagram::removeSignal(std::size_t index) {
    const std::string name = m_signals[index]->name();
    m_signals.erase(m_signals.begin() + static_cast<std::ptrdiff_t>(index));
    std::erase_if(m_arrows,
                  [&](const Arrow& a) { return a.from.signal == name || a.to.signal == name; });
    std::erase_if(m_annotations, [&](const Annotation& a) { return a.signal == name; });
    std::erase_if(m_gaps, [&](const Gap& g) { return g.signal == name; });
    m_indexStale = true;
    changed(static_cast<Aspect>(aspectSignals));
}

bool Diagram::renameSignal(std::size_t index, const std::string& name) {
    if (name.empty() || findSignal(name) != Signal::npos)
        return false;
    renameReferences(m_signals[index]->name(), name);
    m_signals[index]->setName(name);
    m_indexStale = true;
    changed(static_cast<Aspect>(aspectSignals));
    return true;
}

void Diagram::renameReferences(const std::string& from, const std::string& to) {
    for (Arrow& arrow : m_arrows) {
        if (arrow.from.signal == from)
            arrow.from.signal = to;
        if (arrow.to.signal == from)
            arrow.to.signal = to;
    }
    for (Annotation& annotation : m_annotations) {
        if (annotation.signal == from)
            annotation.signal = to;
    }
    for (Gap& gap : m_gaps) {
        if (gap.signal == from)
            gap.signal = to;
    }
}

void Diagram::moveSignal(std::size_t index, std::size_t to) {
    to = std::min(to, m_signals.size() - 1);
    auto moved = std::move(m_signals[index]);
    m_signals.erase(m_signals.begin() + static_cast<std::ptrdiff_t>(index));
    m_signals.insert(m_signals.begin() + static_cast<std::ptrdiff_t>(to), std::move(moved));
    m_indexStale = true;
    changed(static_cast<Aspect>(aspectSignals));
}

void Diagram::addGroup(const std::string& name) {
    if (std::find(m_groups.begin(), m_groups.end(), name) == m_groups.end()) {
        m_groups.push_back(name);
        changed(static_cast<Aspect>(aspectSignals));
    }
}

namespace {

template <class T>
bool eraseAt(std::vector<T>& items, std::size_t index) {
    if (index >= items.size())
        return false;
    items.erase(items.begin() + static_cast<std::ptrdiff_t>(index));
    return true;
}

} // namespace

void Diagram::addArrow(const Arrow& arrow) {
    m_arrows.push_back(arrow);
    changed(static_cast<Aspect>(aspectDecorations));
}

bool Diagram::removeArrow(std::size_t index) {
    const bool removed = eraseAt(m_arrows, index);
    if (removed)
        changed(static_cast<Aspect>(aspectDecorations));
    return removed;
}

void Diagram::addMarker(const Marker& marker) {
    m_markers.push_back(marker);
    changed(static_cast<Aspect>(aspectDecorations));
}

bool Diagram::removeMarker(std::size_t index) {
    const bool removed = eraseAt(m_markers, index);
    if (removed)
        changed(static_cast<Aspect>(aspectDecorations));
    return removed;
}

void Diagram::addAnnotation(const Annotation& annotation) {
    m_annotations.push_back(annotation);
    changed(static_cast<Aspect>(aspectDecorations));
}

bool Diagram::removeAnnotation(std::size_t index) {
    const bool removed = eraseAt(m_annotations, index);
    if (removed)
        changed(static_cast<Aspect>(aspectDecorations));
    return removed;
}

void Diagram::addGap(const Gap& gap) {
    m_gaps.push_back(gap);
    changed(static_cast<Aspect>(aspectDecorations));
}

bool Diagram::removeGap(std::size_t index) {
    const bool removed = eraseAt(m_gaps, index);
    if (removed)
        changed(static_cast<Aspect>(aspectDecorations));
    return removed;
}

void Diagram::setGrid(const Grid& grid) {
    m_grid = grid;
    changed(static_cast<Aspect>(aspectDecorations));
}

std::size_t Diagram::totalChanges() const {
    std::size_t total = 0;
    for (const auto& signal : m_signals)
        total += signal->changeCount();
    return total;
}

std::size_t Diagram::totalTexts() const {
    std::size_t total = 0;
    for (const auto& signal : m_signals)
        total += signal->textCount();
    return total;
}
