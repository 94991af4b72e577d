/// \file
/// Change notification between models and their dependents: a model lists the dependents
/// that display or use it and tells each of them when one aspect of it changed. The update
/// is dispatched twice (the model's sendUpdateTo picks the dependent's update overload for
/// the model's own class), so a dependent needs no type tests.
#pragma once

#include "core/Collections.h"
#include "core/TqExport.h"
#include "core/TqObject.h"

#include <memory>

/// What changed. The values belong to the model classes that send them; they are passed
/// through unchanged. An application's own aspects start at aspectUser.
enum Aspect : int {
    aspectAll = 0,
    aspectValue = 1,
    aspectTransformation = 2,
    aspectVisibleArea = 3,
    aspectContents = 4,
    aspectUser = 1000
};

class Dependent;
class Model;
class ScrollBar;
class VerticalScrollBar;
class HorizontalScrollBar;
class ColumnControl;
class TreeNode;
class ViewedFile;
class DebuggerData;
/// Model classes built by the window layer and by the application; their update overloads
/// do nothing by default, so a forward declaration is all this layer needs.
class Unit;
class wsiDevice;
class StatusBarField;
class StatusBar;
class FormalConfigParam;
class FormalConfigSet;
class ActualConfigParam;
class ActualConfigComponentSet;

/// Anything that has dependents. The dependent list is created by the first addDependent and
/// deleted when its last dependent leaves; links are always kept on both sides.
class TQ_EXPORT iModel : public TqObject {
public:
    iModel() = default;
    ///@{
    /// Copies share no links: a copy starts without dependents.
    iModel(const iModel&) : TqObject() {}
    iModel& operator=(const iModel&) { return *this; }
    ///@}
    /// Unlinks this model from every dependent, so none keeps a dangling pointer.
    ~iModel() override;

    /// Appends d unless it is listed already, and lists this model in d.
    virtual void addDependent(Dependent& d);
    /// Unlinks d on both sides; does nothing if d is not a dependent.
    virtual void removeDependent(Dependent& d);
    /// Removes d from this model's list only (d's own list is its caller's business).
    void primitiveRemoveDependent(Dependent& d);
    /// Calls sendUpdateTo(dependent, a) for every dependent, in the order added. The
    /// dependents are those listed when the call starts: one removed (or destroyed) by an
    /// earlier update in the same round is skipped, one added during it is not told. The
    /// model itself must outlive the call.
    virtual void changed(Aspect a);
    /// Tells this model's dependents of a change in source, as if they depended on it.
    void relay(iModel& source, Aspect a);
    /// The second dispatch: calls d.update(*this-as-its-own-class, a). The base sends
    /// nothing; every model class that sends updates overrides it.
    virtual void sendUpdateTo(Dependent& d, Aspect a);

    /// True while at least one dependent is listed (the list exists only then).
    bool hasDependents() const { return m_dependents != nullptr; }
    /// The dependents in the order added, or null while there are none.
    const OC_<Dependent>* dependents() const { return m_dependents.get(); }

private:
    template <class F>
    void forEachDependent(F f);

    std::unique_ptr<OC_<Dependent>> m_dependents;
    /// Counts removals, so that a round of updates in which nobody left needs no look-ups.
    unsigned m_removals = 0;
};

/// The plain model. Its updates reach Dependent::update(Model&, Aspect).
class TQ_EXPORT Model : public iModel {
public:
    ///@{
    /// The dependent that displays object (whose isImageFor(object) is true), or null.
    Dependent* imageFor(const TqObject& object) const;
    void sendUpdateTo(Dependent& d, Aspect a) override;
    ///@}
};

/// Something that depends on models. It is itself an iModel, so it can be a model for others
/// (a device tells its dependents of a new transformation). Its list of models is created by
/// the first primitiveAddModel and deleted when it becomes empty.
class TQ_EXPORT Dependent : public iModel {
public:
    Dependent() = default;
    ///@{
    /// Copies share no links: a copy starts without models or dependents.
    Dependent(const Dependent& other) : iModel(other) {}
    Dependent& operator=(const Dependent&) { return *this; }
    ///@}
    /// Leaves every model first, then the iModel destructor unlinks its own dependents.
    ~Dependent() override;

    /// Lists model in this dependent only (addDependent calls it); adding twice does nothing.
    /// A model is any iModel, since a dependent may depend on another dependent.
    void primitiveAddModel(iModel& model);
    /// Removes model from this dependent's list only; deletes the list when it becomes empty.
    void primitiveRemoveModel(iModel& model);
    /// Leaves every model (each model's list loses this dependent), then drops the list.
    void removeAllDependencies();

    /// True while this dependent is listed by at least one model.
    bool isDependent() const { return m_models != nullptr; }
    /// The models this dependent is listed by, in the order added, or null while there are
    /// none. The list belongs to the dependent.
    const OC_<iModel>* models() const { return m_models.get(); }
    /// True if this dependent displays object; false here.
    virtual bool isImageFor(const TqObject& object) const;

    ///@{
    /// The first dispatch's targets, one per model class that sends updates. The scroll
    /// bars, ColumnControl, TreeNode, ViewedFile and DebuggerData forward to a more general
    /// overload by default (a vertical or horizontal scroll bar to the ScrollBar one, the
    /// others to the Model one); all others do nothing by default.
    virtual void update(Model& model, Aspect a);
    virtual void update(Unit& unit, Aspect a);
    virtual void update(ScrollBar& bar, Aspect a);
    virtual void update(VerticalScrollBar& bar, Aspect a);
    virtual void update(HorizontalScrollBar& bar, Aspect a);
    virtual void update(wsiDevice& device, Aspect a);
    virtual void update(StatusBarField& field, Aspect a);
    virtual void update(StatusBar& bar, Aspect a);
    virtual void update(ColumnControl& control, Aspect a);
    virtual void update(TreeNode& node, Aspect a);
    virtual void update(ViewedFile& file, Aspect a);
    virtual void update(FormalConfigParam& param, Aspect a);
    virtual void update(FormalConfigSet& set, Aspect a);
    virtual void update(ActualConfigParam& param, Aspect a);
    virtual void update(ActualConfigComponentSet& set, Aspect a);
    virtual void update(DebuggerData& data, Aspect a);
    ///@}

private:
    std::unique_ptr<OC_<iModel>> m_models;
};

/// The notification side of the model classes whose update overloads forward to a more
/// general one. The window layer and the application derive their scroll bars, column
/// controls, tree nodes, viewed files and debugger data from these and add their state; what
/// these classes do here is to send their updates to the overload for their own class.
class TQ_EXPORT ScrollBar : public Model {
public:
    void sendUpdateTo(Dependent& d, Aspect a) override;
};

/// A vertical scroll bar's model: its dependents get update(VerticalScrollBar&).
class TQ_EXPORT VerticalScrollBar : public ScrollBar {
public:
    void sendUpdateTo(Dependent& d, Aspect a) override;
};

/// A horizontal scroll bar's model: its dependents get update(HorizontalScrollBar&).
class TQ_EXPORT HorizontalScrollBar : public ScrollBar {
public:
    void sendUpdateTo(Dependent& d, Aspect a) override;
};

/// The model of a control of resizable columns: its dependents get update(ColumnControl&).
class TQ_EXPORT ColumnControl : public Model {
public:
    void sendUpdateTo(Dependent& d, Aspect a) override;
};

/// The model of a node of a tree view: its dependents get update(TreeNode&).
class TQ_EXPORT TreeNode : public Model {
public:
    void sendUpdateTo(Dependent& d, Aspect a) override;
};

/// The model of a file shown in a viewer: its dependents get update(ViewedFile&).
class TQ_EXPORT ViewedFile : public Model {
public:
    void sendUpdateTo(Dependent& d, Aspect a) override;
};

/// The base of the application's debugger data classes (variables, frames, breakpoints).
class TQ_EXPORT DebuggerData : public Model {
public:
    void sendUpdateTo(Dependent& d, Aspect a) override;
};
