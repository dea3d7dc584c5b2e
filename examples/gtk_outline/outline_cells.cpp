#include "outline_cells.h"

#include "outline_node.h"

using namespace orvane;

static std::string textForKey(const RangeItem& item, const char* key) {
    const Value value = item.valueForKey(key);
    if (const DecimalSeconds* duration = value.asDecimal()) {
        const auto seconds = static_cast<int>(duration->count() / 1000000);
        char text[48];
        g_snprintf(text, sizeof text, "%d:%02d:%02d", seconds / 3600, seconds / 60 % 60, seconds % 60);
        return text;
    }
    return value.asString() ? *value.asString() : "";
}

/// Draws the colour of the node that belongs to the area, as wide as its share when the area is a bar.
static void drawColor(GtkDrawingArea* area, cairo_t* cairo, int width, int height, gpointer isBar) {
    auto* node = static_cast<OutlineNode*>(g_object_get_data(G_OBJECT(area), "node"));
    if (!node) return;
    const Value value = outline_node_item(node).valueForKey("colorValue");
    const Color color = value.asColor() ? *value.asColor() : Color{0.5, 0.5, 0.5, 1};
    const double length = isBar ? std::max(3.0, width * outline_node_share(node)) : width;
    cairo_rectangle(cairo, 0.5, 0.5, length - 1, height - 1);
    cairo_set_source_rgb(cairo, color.red, color.green, color.blue);
    cairo_fill_preserve(cairo);
    // An item may be as light, or as dark, as what lies behind it.
    cairo_set_source_rgba(cairo, 0.5, 0.5, 0.5, 0.6);
    cairo_set_line_width(cairo, 1);
    cairo_stroke(cairo);
}

static GtkWidget* newColor(bool isBar) {
    GtkWidget* area = gtk_drawing_area_new();
    gtk_drawing_area_set_content_width(GTK_DRAWING_AREA(area), 12);
    gtk_drawing_area_set_content_height(GTK_DRAWING_AREA(area), 12);
    gtk_widget_set_valign(area, GTK_ALIGN_CENTER);
    gtk_drawing_area_set_draw_func(GTK_DRAWING_AREA(area), drawColor, GINT_TO_POINTER(isBar), nullptr);
    return area;
}

/// A label that shows the text under a key: its widget's name is the key.
static GtkWidget* newLabel(const char* key) {
    GtkWidget* label = gtk_label_new(nullptr);
    gtk_widget_set_name(label, key);
    return label;
}

static void setUpName(GtkSignalListItemFactory*, GtkListItem* cell) {
    GtkWidget* box = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 8);
    gtk_box_append(GTK_BOX(box), newColor(false));
    GtkWidget* label = newLabel("name");
    gtk_label_set_ellipsize(GTK_LABEL(label), PANGO_ELLIPSIZE_END);
    gtk_box_append(GTK_BOX(box), label);
    GtkWidget* expander = gtk_tree_expander_new();
    gtk_tree_expander_set_child(GTK_TREE_EXPANDER(expander), box);
    gtk_list_item_set_child(cell, expander);
}

static void setUpBar(GtkSignalListItemFactory*, GtkListItem* cell) {
    gtk_list_item_set_child(cell, newColor(true));
}

static void setUpDuration(GtkSignalListItemFactory*, GtkListItem* cell) {
    GtkWidget* label = newLabel("duration");
    gtk_label_set_xalign(GTK_LABEL(label), 1);
    gtk_widget_add_css_class(label, "numeric");
    gtk_list_item_set_child(cell, label);
}

/// Has the widget, or those within it, show what the node's item holds.
static void show(GtkWidget* widget, OutlineNode* node) {
    if (GTK_IS_LABEL(widget)) {
        const std::string text = textForKey(outline_node_item(node), gtk_widget_get_name(widget));
        gtk_label_set_text(GTK_LABEL(widget), text.c_str());
    } else if (GTK_IS_DRAWING_AREA(widget)) {
        g_object_set_data_full(G_OBJECT(widget), "node", g_object_ref(node), g_object_unref);
        gtk_widget_queue_draw(widget);
    } else {
        for (GtkWidget* child = gtk_widget_get_first_child(widget); child;
             child = gtk_widget_get_next_sibling(child))
            show(child, node);
    }
}

/// The part of a cell that shows something of a node: all but the arrow.
static GtkWidget* contentOf(GtkListItem* cell) {
    GtkWidget* child = gtk_list_item_get_child(cell);
    return GTK_IS_TREE_EXPANDER(child) ? gtk_tree_expander_get_child(GTK_TREE_EXPANDER(child)) : child;
}

static void showAgain(OutlineNode* node, gpointer content) { show(GTK_WIDGET(content), node); }

static void bind(GtkSignalListItemFactory*, GtkListItem* cell) {
    auto* row = GTK_TREE_LIST_ROW(gtk_list_item_get_item(cell));
    GtkWidget* child = gtk_list_item_get_child(cell);
    if (GTK_IS_TREE_EXPANDER(child)) gtk_tree_expander_set_list_row(GTK_TREE_EXPANDER(child), row);
    auto* node = OUTLINE_NODE(gtk_tree_list_row_get_item(row));
    show(contentOf(cell), node);
    g_signal_connect(node, "changed", G_CALLBACK(showAgain), contentOf(cell));
    g_object_set_data_full(G_OBJECT(cell), "node", node, g_object_unref);
}

static void unbind(GtkSignalListItemFactory*, GtkListItem* cell) {
    g_signal_handlers_disconnect_by_func(g_object_get_data(G_OBJECT(cell), "node"),
                                         reinterpret_cast<gpointer>(showAgain), contentOf(cell));
    g_object_set_data(G_OBJECT(cell), "node", nullptr);
}

static GtkColumnViewColumn* newColumn(const char* title, GCallback setUp, bool expands) {
    GtkListItemFactory* factory = gtk_signal_list_item_factory_new();
    g_signal_connect(factory, "setup", setUp, nullptr);
    g_signal_connect(factory, "bind", G_CALLBACK(bind), nullptr);
    g_signal_connect(factory, "unbind", G_CALLBACK(unbind), nullptr);
    GtkColumnViewColumn* column = gtk_column_view_column_new(title, factory);
    gtk_column_view_column_set_expand(column, expands);
    return column;
}

GtkColumnViewColumn* outline_name_column() { return newColumn("Name", G_CALLBACK(setUpName), true); }
GtkColumnViewColumn* outline_bar_column() { return newColumn("", G_CALLBACK(setUpBar), true); }
GtkColumnViewColumn* outline_duration_column() {
    GtkColumnViewColumn* column = newColumn("Time", G_CALLBACK(setUpDuration), false);
    gtk_column_view_column_set_fixed_width(column, 110);
    return column;
}

std::string outline_rows_shown(GtkWidget* view) {
    std::string rows;
    if (!gtk_widget_get_mapped(view)) return rows;  // kept for later use by the view
    if (GTK_IS_TREE_EXPANDER(view)) {
        GtkTreeListRow* row = gtk_tree_expander_get_list_row(GTK_TREE_EXPANDER(view));
        if (row) rows += std::to_string(gtk_tree_list_row_get_depth(row));
    } else if (GTK_IS_DRAWING_AREA(view)) {
        auto* node = static_cast<OutlineNode*>(g_object_get_data(G_OBJECT(view), "node"));
        if (node && gtk_widget_get_ancestor(view, GTK_TYPE_TREE_EXPANDER))
            rows += "\t" + textForKey(outline_node_item(node), "color");
    } else if (GTK_IS_LABEL(view) && gtk_widget_get_name(view) == std::string("name")) {
        rows += std::string("\t") + gtk_label_get_text(GTK_LABEL(view));
    } else if (GTK_IS_LABEL(view) && gtk_widget_get_name(view) == std::string("duration")) {
        rows += std::string("\t") + gtk_label_get_text(GTK_LABEL(view)) + "\n";
    }
    for (GtkWidget* child = gtk_widget_get_first_child(view); child;
         child = gtk_widget_get_next_sibling(child))
        rows += outline_rows_shown(child);
    return rows;
}
