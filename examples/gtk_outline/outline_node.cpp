#include "outline_node.h"

#include <map>

using namespace orvane;

struct _OutlineNode {
    GObject parent;
    Ref<RangeItem>* item;
    double share;
    GListStore* children;
};

G_DEFINE_FINAL_TYPE(OutlineNode, outline_node, G_TYPE_OBJECT)

static void outline_node_finalize(GObject* object) {
    OutlineNode* node = OUTLINE_NODE(object);
    delete node->item;
    g_clear_object(&node->children);
    G_OBJECT_CLASS(outline_node_parent_class)->finalize(object);
}

static void outline_node_class_init(OutlineNodeClass* type) {
    G_OBJECT_CLASS(type)->finalize = outline_node_finalize;
    g_signal_new("changed", outline_node_get_type(), G_SIGNAL_RUN_LAST, 0, nullptr, nullptr, nullptr,
                 G_TYPE_NONE, 0);
}

static void outline_node_init(OutlineNode* node) { node->item = new Ref<RangeItem>; }

const RangeItem& outline_node_item(OutlineNode* node) { return **node->item; }
double outline_node_share(OutlineNode* node) { return node->share; }
GListStore* outline_node_children(OutlineNode* node) { return node->children; }

/// What tells items apart: names may be equal.
static std::pair<bool, std::string> identityOf(const RangeItem& item) {
    const Value uid = item.valueForKey("uid");
    const std::string* text = uid.asString();
    return {item.isGroup(), text ? *text : ""};
}

static void setItem(OutlineNode* node, const Ref<RangeItem>& item, DecimalSeconds longest) {
    *node->item = item;
    const auto duration = item->valueForKey("duration").doubleValue();
    node->share = longest.count() > 0 ? duration / std::chrono::duration<double>(longest).count() : 0;
    if (item->isGroup()) {
        if (!node->children) node->children = g_list_store_new(outline_node_get_type());
        const auto apps = item->appsForRange();
        outline_node_fill(node->children, {apps.begin(), apps.end()}, longest);
    }
    g_signal_emit_by_name(node, "changed");
}

void outline_node_fill(GListStore* list, const std::vector<Ref<RangeItem>>& items, DecimalSeconds longest) {
    GListModel* model = G_LIST_MODEL(list);
    std::vector<gpointer> before;
    std::map<std::pair<bool, std::string>, gpointer> known;
    for (guint i = 0; i < g_list_model_get_n_items(model); ++i) {
        before.push_back(g_list_model_get_item(model, i));
        known[identityOf(outline_node_item(OUTLINE_NODE(before.back())))] = before.back();
    }
    std::vector<gpointer> after;
    for (const Ref<RangeItem>& item : items) {
        const auto found = known.find(identityOf(*item));
        after.push_back(found != known.end() ? g_object_ref(found->second)
                                             : g_object_new(outline_node_get_type(), nullptr));
        setItem(OUTLINE_NODE(after.back()), item, longest);
        if (found != known.end()) known.erase(found);
    }
    if (before != after)
        g_list_store_splice(list, 0, static_cast<guint>(before.size()), after.data(),
                            static_cast<guint>(after.size()));
    for (const auto& nodes : {before, after})
        for (gpointer node : nodes) g_object_unref(node);
}
