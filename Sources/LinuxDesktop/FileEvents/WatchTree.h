#pragma once

#include "LinuxDesktop/FileEvents/FlatIndex.h"
#include "LinuxDesktop/FileEvents/NameArena.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace stemvault::file_events {

using NodeId = std::uint32_t;
inline constexpr NodeId noNode = UINT32_MAX;

/// A reference that stays safe to check after its node was removed. Node numbers are reused, but
/// with another age.
struct NodeRef {
    NodeId id = noNode;
    std::uint32_t age = 0;
};

/// The folders below the watched roots, one node each, and the kernel's watches on them. A path is
/// built from the names of the nodes above on demand, so a rename moves a single node.
///
/// An inode has one watch but may have several places: bind mounts, and roots that lie within each
/// other. The nodes of one watch form a chain.
class WatchTree {
public:
    enum class Spelling { Given, Resolved };

    /// Adds a root: its path as given is used in events, its resolved path for the kernel. Neither
    /// may end with a slash; "/" is the empty string.
    NodeId addRoot(std::string given, std::string resolved);
    NodeId add(NodeId parent, std::string_view name);

    /// One more than the highest node number used so far.
    [[nodiscard]] NodeId end() const { return static_cast<NodeId>(nodes.size()); }
    [[nodiscard]] NodeId child(NodeId parent, std::string_view name) const;
    [[nodiscard]] NodeId firstChild(NodeId node) const { return nodes[node].firstChild; }
    [[nodiscard]] NodeId nextSibling(NodeId node) const { return nodes[node].next; }
    [[nodiscard]] NodeId parent(NodeId node) const { return nodes[node].parent; }
    [[nodiscard]] bool isRoot(NodeId node) const { return nodes[node].isRoot; }
    [[nodiscard]] bool isWithin(NodeId node, NodeId ancestor) const;
    /// Valid until the next node is added.
    [[nodiscard]] std::string_view name(NodeId node) const { return names.at(nodes[node].name); }

    /// False, with `path` left unchanged, while the node or a node above it is detached.
    bool path(NodeId node, Spelling spelling, std::string& path) const;
    /// The path of an item in a folder; absent while the folder or one above it is detached.
    [[nodiscard]] std::optional<std::string> itemPath(
        NodeId folder, std::string_view name, Spelling spelling) const;

    /// Removes a node from its place, with everything below it, and puts it at another.
    void detach(NodeId node);
    void attach(NodeId node, NodeId parent, std::string_view name);
    /// Puts a detached node at the place of `fresh`, which is removed.
    void replace(NodeId fresh, NodeId detached);

    void remove(NodeId node);
    void removeBelow(NodeId node);

    /// The watches whose last node was removed since the last call. Some may have a node again.
    [[nodiscard]] std::vector<int> takeUnusedWatches() { return std::exchange(unusedWatches, {}); }

    [[nodiscard]] int watch(NodeId node) const { return nodes[node].watch; }
    [[nodiscard]] NodeId atWatch(int watch) const;
    [[nodiscard]] NodeId nextPlace(NodeId node) const { return nodes[node].nextPlace; }
    void setWatch(NodeId node, int watch);
    void clearWatch(NodeId node);

    /// Changes whenever the path of any node may have changed.
    [[nodiscard]] std::uint32_t shape() const { return changes; }

    [[nodiscard]] NodeRef ref(NodeId node) const { return { node, nodes[node].age }; }
    [[nodiscard]] bool isCurrent(NodeRef node) const
    {
        return node.id != noNode && nodes[node.id].age == node.age;
    }

    /// Marks a child that a listing has found; children without the mark are missing.
    void setSeen(NodeId node, bool isSeen) { nodes[node].isSeen = isSeen; }
    [[nodiscard]] bool isSeen(NodeId node) const { return nodes[node].isSeen; }

private:
    struct Node {
        NodeId parent = noNode;
        NodeId firstChild = noNode;
        NodeId next = noNode;
        NodeId previous = noNode;
        NodeId nextPlace = noNode;
        std::uint32_t name = 0; ///< The place in `names`; for a root, the index in `roots`.
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
    std::vector<int> unusedWatches;
    std::uint32_t changes = 0;
    NameArena names;
    FlatIndex byName;
    FlatIndex byWatch;
};

} // namespace stemvault::file_events
