#pragma once

#include "CoreExport.h"

#include <QString>
#include <QVector>

namespace corvane {
namespace base {
namespace core {
namespace utility {

/**
 * A node of a named tree. A node points at its parent and children and owns none of them.
 * Subclasses add a payload; every operation is virtual so that they may refine it.
 *
 * Kept as existing callers know them: getChildAt() accepts an index equal to the count (and
 * negative ones), so stay below getChildrenCount(); getNodeForTreeNodeName() answers the last
 * subtree searched, not the first hit; removeTreeNode() answers true only for a child of the
 * searched node itself.
 */
class CORE_EXPORT AbstractTreeNode
{
public:
    /// The root: named "ROOT", no parent, row 0.
    AbstractTreeNode();
    /// Does not add itself to parent's children.
    AbstractTreeNode(QString name, AbstractTreeNode* parent, int row);
    virtual ~AbstractTreeNode();

    /// The process-wide root node, named "ROOT".
    static AbstractTreeNode* root();

    /// Copies the node's name into name.
    virtual void getNodeName(QString& name) const;
    /// Copies the list of children into children.
    virtual void getChildren(QVector<AbstractTreeNode*>& children);
    /// The parent given at construction; null for a root.
    virtual AbstractTreeNode* getParentTreeNode();
    /// A node named name (case-sensitive) below start, or below the parent when start is null;
    /// null for an empty name.
    virtual AbstractTreeNode* getNodeForTreeNodeName(AbstractTreeNode* start, const QString& name);
    /// Appends node to the children (false for null); node's parent is left as it is.
    virtual bool addTreeNode(AbstractTreeNode* node);
    /// Adds node to parent when parent is a child of this node, else to this node's parent.
    virtual bool addTreeNode(AbstractTreeNode* parent, AbstractTreeNode* node);
    /// Takes node out of the children of parent (this node's parent when null) or, depth-first, of
    /// a node below; the node is not deleted.
    virtual bool removeTreeNode(AbstractTreeNode* parent, AbstractTreeNode* node);
    /// Writes whether the node has children.
    virtual void hasChildren(bool& hasChildren) const;
    /// Writes the number of children.
    virtual void getChildrenCount(int& count) const;
    /// The child at index; throws ValueOutOfRangeException for an index above the count.
    virtual AbstractTreeNode* getChildAt(int index) const;
    /// Writes the row given at construction.
    virtual void getNodeRow(int& row) const;

private:
    QVector<AbstractTreeNode*> children;
    QString nodeName;
    AbstractTreeNode* parent;
    int row;
};

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
