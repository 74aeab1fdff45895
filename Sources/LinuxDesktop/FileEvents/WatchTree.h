#pragma once

#include "LinuxDesktop/FileEvents/FlatIndex.h"
#include "LinuxDesktop/FileEvents/NameArena.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace stemvault {

using NodeId = std::uint32_t;
inline constexpr NodeId noNode = UINT32_MAX;

/// A node that may be gone by the time it is used again.
struct NodeRef {
    NodeId id = noNode;
    std::uint32_t age = 0;
};

/// The folders below the watched roots, one node each, and the kernel's watches on them. Paths are
/// put together when they are asked for, so a rename moves one node and nothing else.
///
/// One inode has one watch, but may have several places: bind mounts, and roots that lie within
/// each other. The nodes of one watch form a chain.
class WatchTree {
public:
    enum class Spelling { Given, Resolved };

    /// A root stands for a path: as it was given, for events, and resolved, for the kernel. Neither
    /// ends with a slash; the root of everything is empty.
    NodeId addRoot(std::string given, std::string resolved);
    NodeId add(NodeId parent, std::string_view name);

    /// Behind the last of all nodes there are or have been.
    [[nodiscard]] NodeId end() const { return static_cast<NodeId>(nodes.size()); }
    [[nodiscard]] NodeId child(NodeId parent, std::string_view name) const;
    [[nodiscard]] NodeId firstChild(NodeId node) const { return nodes[node].firstChild; }
    [[nodiscard]] NodeId nextSibling(NodeId node) const { return nodes[node].next; }
    [[nodiscard]] NodeId parent(NodeId node) const { return nodes[node].parent; }
    [[nodiscard]] bool isRoot(NodeId node) const { return nodes[node].isRoot; }
    [[nodiscard]] bool isWithin(NodeId node, NodeId ancestor) const;
    /// Valid until the next node is added.
    [[nodiscard]] std::string_view name(NodeId node) const { return names.at(nodes[node].name); }

    /// False, and `path` is left as it is, while the node is below a detached one.
    bool path(NodeId node, Spelling spelling, std::string& path) const;

    /// Takes a node with everything below it from its place, and puts it in another.
    void detach(NodeId node);
    void attach(NodeId node, NodeId parent, std::string_view name);
    /// Puts a detached node in the place of a fresh one, which is removed.
    void replace(NodeId fresh, NodeId detached);

    /// Removes nodes, and appends the watches that no place uses any more.
    void remove(NodeId node, std::vector<int>& unused);
    void removeBelow(NodeId node, std::vector<int>& unused);

    [[nodiscard]] int watch(NodeId node) const { return nodes[node].watch; }
    [[nodiscard]] NodeId atWatch(int watch) const;
    [[nodiscard]] NodeId nextPlace(NodeId node) const { return nodes[node].nextPlace; }
    void setWatch(NodeId node, int watch);
    void clearWatch(NodeId node);

    /// Another number whenever any node may have another path than before.
    [[nodiscard]] std::uint32_t shape() const { return changes; }

    [[nodiscard]] NodeRef ref(NodeId node) const { return { node, nodes[node].age }; }
    [[nodiscard]] bool isCurrent(NodeRef node) const { return nodes[node.id].age == node.age; }

    /// A mark for whoever goes through the children of a node.
    void setSeen(NodeId node, bool isSeen) { nodes[node].isSeen = isSeen; }
    [[nodiscard]] bool isSeen(NodeId node) const { return nodes[node].isSeen; }

private:
    struct Node {
        NodeId parent = noNode;
        NodeId firstChild = noNode;
        NodeId next = noNode;
        NodeId previous = noNode;
        NodeId nextPlace = noNode;
        std::uint32_t name = 0; ///< In the arena; of a root in `roots`.
        int watch = -1;
        std::uint32_t age : 30 = 0;
        bool isRoot : 1 = false;
        bool isSeen : 1 = false;
    };
    static_assert(sizeof(Node) == 32);

    struct Root {
        std::string given;
        std::string resolved;
    };

    [[nodiscard]] NodeId newNode();
    void freeNode(NodeId node);
    void link(NodeId node, NodeId parent, std::string_view name);
    void collectNames();
    [[nodiscard]] std::uint32_t hashOf(NodeId node) const;

    std::vector<Node> nodes;
    std::vector<NodeId> freeNodes;
    std::vector<Root> roots;
    std::uint32_t changes = 0;
    NameArena names;
    FlatIndex byName;
    FlatIndex byWatch;
};

} // namespace stemvault
