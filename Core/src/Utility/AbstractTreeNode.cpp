#include "Utility/AbstractTreeNode.h"

#include "Exceptions/Exceptions.h"

#include <QMutex>
#include <QMutexLocker>

namespace corvane {
namespace base {
namespace core {
namespace utility {

namespace {
const QString source = QStringLiteral("AbstractTreeNode");
}

AbstractTreeNode::AbstractTreeNode() : AbstractTreeNode(QStringLiteral("ROOT"), nullptr, 0) { }

AbstractTreeNode::AbstractTreeNode(QString name, AbstractTreeNode* parent, int row)
    : nodeName(std::move(name)), parent(parent), row(row)
{
}

AbstractTreeNode::~AbstractTreeNode() = default;

AbstractTreeNode* AbstractTreeNode::root()
{
    static QMutex mutex;
    QMutexLocker locker(&mutex);
    static AbstractTreeNode node;
    return &node;
}

void AbstractTreeNode::getNodeName(QString& name) const
{
    name = nodeName;
}

void AbstractTreeNode::getChildren(QVector<AbstractTreeNode*>& children)
{
    children = this->children;
}

AbstractTreeNode* AbstractTreeNode::getParentTreeNode()
{
    return parent;
}

AbstractTreeNode* AbstractTreeNode::getNodeForTreeNodeName(AbstractTreeNode* start,
                                                           const QString& name)
{
    AbstractTreeNode* searched = start != nullptr ? start : parent;
    if (name.isEmpty() || searched == nullptr) {
        return nullptr;
    }
    bool any = false;
    searched->hasChildren(any);
    if (!any) {
        return nullptr;
    }
    QVector<AbstractTreeNode*> candidates;
    searched->getChildren(candidates);
    AbstractTreeNode* result = nullptr;
    for (AbstractTreeNode* child : qAsConst(candidates)) {
        if (child == nullptr) {
            continue;
        }
        QString childName;
        child->getNodeName(childName);
        if (childName == name) {
            return child;
        }
        result = getNodeForTreeNodeName(child, name); // the last subtree's answer wins
    }
    return result;
}

bool AbstractTreeNode::addTreeNode(AbstractTreeNode* node)
{
    if (node == nullptr) {
        return false;
    }
    children.append(node);
    return true;
}

bool AbstractTreeNode::addTreeNode(AbstractTreeNode* parent, AbstractTreeNode* node)
{
    if (node == nullptr) {
        throw exceptions::InvalidArgumentException(source, QStringLiteral("addTreeNode"),
                                                   QStringLiteral("The adding node is NULL."));
    }
    AbstractTreeNode* target
        = parent != nullptr && children.contains(parent) ? parent : this->parent;
    return target != nullptr && target->addTreeNode(node);
}

bool AbstractTreeNode::removeTreeNode(AbstractTreeNode* parent, AbstractTreeNode* node)
{
    AbstractTreeNode* searched = parent != nullptr ? parent : this->parent;
    if (searched == nullptr) {
        return false;
    }
    bool any = false;
    searched->hasChildren(any);
    if (!any) {
        return false;
    }
    int count = 0;
    searched->getChildrenCount(count);
    for (int i = 0; i < count; ++i) {
        AbstractTreeNode* child = searched->getChildAt(i);
        if (child == nullptr) {
            continue;
        }
        if (child == node) {
            searched->children.remove(i);
            return true;
        }
        removeTreeNode(child, node); // deeper removals do not count
    }
    return false;
}

void AbstractTreeNode::hasChildren(bool& hasChildren) const
{
    hasChildren = !children.isEmpty();
}

void AbstractTreeNode::getChildrenCount(int& count) const
{
    count = children.size();
}

AbstractTreeNode* AbstractTreeNode::getChildAt(int index) const
{
    if (index > children.size()) {
        throw exceptions::ValueOutOfRangeException(
            source, QStringLiteral("getChildAt"),
            QStringLiteral("AbstractTreeNode cannot return the value from a invalid index."), 0,
            children.size());
    }
    return children.value(index);
}

void AbstractTreeNode::getNodeRow(int& row) const
{
    row = this->row;
}

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
