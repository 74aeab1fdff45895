#include "LinuxDesktop/FileEvents/WatchTree.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace stemvault::file_events {

namespace {

std::uint32_t hashOfName(NodeId parent, std::string_view name)
{
    // Multiplying by 2^32 divided by the golden ratio spreads the numbers of neighbouring parents,
    // so that equal names in them do not land in neighbouring slots.
    return spread(std::hash<std::string_view> {}(name) + parent * 0x9E3779B1UL);
}

std::uint32_t hashOfWatch(int watch)
{
    return spread(static_cast<std::uint32_t>(watch));
}

} // namespace

NodeId WatchTree::addRoot(std::string given, std::string resolved)
{
    const NodeId node = newNode();
    nodes[node].isRoot = true;
    nodes[node].name = static_cast<std::uint32_t>(roots.size());
    roots.push_back({ std::move(given), std::move(resolved) });
    return node;
}

NodeId WatchTree::add(NodeId parent, std::string_view name)
{
    const NodeId node = newNode();
    link(node, parent, name);
    return node;
}

NodeId WatchTree::child(NodeId parent, std::string_view name) const
{
    return byName.find(hashOfName(parent, name), [&](NodeId node) {
        return nodes[node].parent == parent && names.at(nodes[node].name) == name;
    });
}

bool WatchTree::isWithin(NodeId node, NodeId ancestor) const
{
    while (node != noNode && node != ancestor)
        node = nodes[node].parent;
    return node == ancestor;
}

bool WatchTree::path(NodeId node, Spelling spelling, std::string& path) const
{
    std::size_t size = 0;
    NodeId root = node;
    for (; nodes[root].parent != noNode; root = nodes[root].parent)
        size += names.at(nodes[root].name).size() + 1;
    if (!nodes[root].isRoot)
        return false;
    const Root& text = roots[nodes[root].name];
    const std::string& start = spelling == Spelling::Given ? text.given : text.resolved;
    path.resize(start.size() + size);
    start.copy(path.data(), start.size());
    char* end = path.data() + path.size();
    for (NodeId at = node; at != root; at = nodes[at].parent) {
        const std::string_view name = names.at(nodes[at].name);
        end -= name.size();
        name.copy(end, name.size());
        *--end = '/';
    }
    return true;
}

std::optional<std::string> WatchTree::itemPath(
    NodeId folder, std::string_view name, Spelling spelling) const
{
    std::string text;
    if (!path(folder, spelling, text))
        return std::nullopt;
    return text.append("/").append(name);
}

void WatchTree::detach(NodeId id)
{
    byName.erase(hashOf(id), id, [this](NodeId other) { return hashOf(other); });
    Node& node = nodes[id];
    if (node.previous != noNode)
        nodes[node.previous].next = node.next;
    else
        nodes[node.parent].firstChild = node.next;
    if (node.next != noNode)
        nodes[node.next].previous = node.previous;
    names.forget(node.name);
    node.parent = node.next = node.previous = noNode;
    ++changes;
}

void WatchTree::attach(NodeId node, NodeId parent, std::string_view name)
{
    link(node, parent, name);
    ++changes;
}

void WatchTree::replace(NodeId fresh, NodeId detached)
{
    const NodeId parent = nodes[fresh].parent;
    const std::string name(names.at(nodes[fresh].name));
    remove(fresh);
    link(detached, parent, name);
}

void WatchTree::remove(NodeId node)
{
    removeBelow(node);
    if (nodes[node].parent != noNode)
        detach(node);
    const int watch = nodes[node].watch;
    clearWatch(node);
    if (watch >= 0 && atWatch(watch) == noNode)
        unusedWatches.push_back(watch);
    freeNode(node);
    if (names.isWasteful())
        collectNames();
}

void WatchTree::removeBelow(NodeId above)
{
    // Remove children before their parents, because the loop climbs back up through the parent.
    NodeId node = above;
    while (nodes[above].firstChild != noNode) {
        while (nodes[node].firstChild != noNode)
            node = nodes[node].firstChild;
        const NodeId parent = nodes[node].parent;
        remove(node);
        node = parent;
    }
}

NodeId WatchTree::atWatch(int watch) const
{
    return byWatch.find(
        hashOfWatch(watch), [&](NodeId node) { return nodes[node].watch == watch; });
}

void WatchTree::setWatch(NodeId node, int watch)
{
    if (nodes[node].watch == watch)
        return;
    clearWatch(node);
    const NodeId first = atWatch(watch);
    nodes[node].watch = watch;
    if (first != noNode)
        nodes[node].nextPlace = std::exchange(nodes[first].nextPlace, node);
    else
        byWatch.insert(hashOfWatch(watch), node,
            [this](NodeId other) { return hashOfWatch(nodes[other].watch); });
}

void WatchTree::clearWatch(NodeId node)
{
    const auto hash = [this](NodeId other) { return hashOfWatch(nodes[other].watch); };
    const int watch = nodes[node].watch;
    if (watch < 0)
        return;
    const NodeId next = std::exchange(nodes[node].nextPlace, noNode);
    if (NodeId place = atWatch(watch); place != node) {
        while (nodes[place].nextPlace != node)
            place = nodes[place].nextPlace;
        nodes[place].nextPlace = next;
    } else {
        byWatch.erase(hash(node), node, hash);
        if (next != noNode)
            byWatch.insert(hash(next), next, hash);
    }
    nodes[node].watch = -1;
}

NodeId WatchTree::newNode()
{
    if (freeNodes.empty()) {
        nodes.emplace_back();
        return static_cast<NodeId>(nodes.size() - 1);
    }
    const NodeId node = freeNodes.back();
    freeNodes.pop_back();
    return node;
}

void WatchTree::freeNode(NodeId id)
{
    const std::uint32_t age = nodes[id].age;
    nodes[id] = Node {};
    nodes[id].age = (age + 1) & 0x3FFFFFFFU;
    ++changes;
    freeNodes.push_back(id);
}

void WatchTree::link(NodeId id, NodeId parent, std::string_view name)
{
    Node& node = nodes[id];
    node.name = names.add(name);
    node.parent = parent;
    node.previous = noNode;
    node.next = std::exchange(nodes[parent].firstChild, id);
    if (node.next != noNode)
        nodes[node.next].previous = id;
    byName.insert(hashOf(id), id, [this](NodeId other) { return hashOf(other); });
}

void WatchTree::collectNames()
{
    NameArena kept;
    for (Node& node : nodes)
        if (node.parent != noNode)
            node.name = kept.add(names.at(node.name));
    names = std::move(kept);
}

std::uint32_t WatchTree::hashOf(NodeId node) const
{
    return hashOfName(nodes[node].parent, names.at(nodes[node].name));
}

} // namespace stemvault::file_events
