#pragma once

#include <gtk/gtk.h>
#include <orvane/orvane.h>

// GTK's list models hold GObjects: this one stands for an item of the range report. It stays the same while a
// report takes the place of another, so that rows keep their selection and stay open or closed; its signal
// "changed" says that there is another item in it.
G_DECLARE_FINAL_TYPE(OutlineNode, outline_node, OUTLINE, NODE, GObject)

/// The item; the node owns it.
const orvane::RangeItem& outline_node_item(OutlineNode* node);
/// What its bar is measured by: the longest duration of all items.
double outline_node_share(OutlineNode* node);
/// The nodes beneath a group's; none for an application. Owned by the node.
GListStore* outline_node_children(OutlineNode* node);

/// Has the list show the items, in their order, with the nodes it has as far as they fit.
void outline_node_fill(GListStore* list, const std::vector<orvane::Ref<orvane::RangeItem>>& items,
                       orvane::DecimalSeconds longest);
