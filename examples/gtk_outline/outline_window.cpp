#include "outline_window.h"

#include <iostream>

#include "outline_cells.h"
#include "outline_node.h"

using namespace orvane;

static GListModel* childrenOf(gpointer item, gpointer) {
    GListStore* children = outline_node_children(OUTLINE_NODE(item));
    return children ? G_LIST_MODEL(g_object_ref(children)) : nullptr;
}

OutlineWindow::OutlineWindow(GtkApplication* application, Orvane& tracker, bool prints)
    : tracker_(tracker),
      context_(tracker.managedObjectContext()),
      window_(gtk_application_window_new(application)),
      total_(GTK_WIDGET(g_object_ref_sink(gtk_label_new(nullptr)))),
      nodes_(g_list_store_new(outline_node_get_type())),
      prints_(prints) {
    GtkTreeListModel* tree = gtk_tree_list_model_new(G_LIST_MODEL(g_object_ref(nodes_)), FALSE, TRUE,
                                                     childrenOf, nullptr, nullptr);
    GtkSingleSelection* selection = gtk_single_selection_new(G_LIST_MODEL(tree));
    gtk_single_selection_set_autoselect(selection, FALSE);
    outline_ = gtk_column_view_new(GTK_SELECTION_MODEL(selection));
    for (GtkColumnViewColumn* column :
         {outline_name_column(), outline_bar_column(), outline_duration_column()}) {
        gtk_column_view_append_column(GTK_COLUMN_VIEW(outline_), column);
        g_object_unref(column);
    }
    GtkWidget* scrolled = gtk_scrolled_window_new();
    gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scrolled), outline_);
    gtk_widget_set_vexpand(scrolled, TRUE);
    gtk_label_set_xalign(GTK_LABEL(total_), 1);
    gtk_widget_add_css_class(total_, "numeric");
    gtk_widget_set_margin_top(total_, 8);
    gtk_widget_set_margin_bottom(total_, 8);
    gtk_widget_set_margin_end(total_, 8);
    GtkWidget* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    gtk_box_append(GTK_BOX(box), scrolled);
    gtk_box_append(GTK_BOX(box), gtk_separator_new(GTK_ORIENTATION_HORIZONTAL));
    gtk_box_append(GTK_BOX(box), total_);
    gtk_window_set_child(GTK_WINDOW(window_), box);
    gtk_window_set_title(GTK_WINDOW(window_), "Today");
    gtk_window_set_default_size(GTK_WINDOW(window_), 560, 420);

    if (context_)
        for (const char* notice :
             {NSManagedObjectContextObjectsDidChangeNotification, NSManagedObjectContextDidSaveNotification})
            context_->notificationCenter().addObserver(
                this, [this](const Notification&) { refreshSoon(); }, notice);
    refresh();
    gtk_window_present(GTK_WINDOW(window_));
    if (prints_) {
        const auto painted =
            +[](GdkFrameClock*, gpointer self) { static_cast<OutlineWindow*>(self)->print(); };
        g_signal_connect(gtk_widget_get_frame_clock(window_), "after-paint", G_CALLBACK(painted), this);
    }
}

OutlineWindow::~OutlineWindow() {
    if (context_) context_->notificationCenter().removeObserver(this);
    if (pendingRefresh_ != 0) g_source_remove(pendingRefresh_);
    g_object_unref(nodes_);
    g_object_unref(total_);
}

/// A poll changes and saves several things: one look at the end of them all is enough.
void OutlineWindow::refreshSoon() {
    if (pendingRefresh_ != 0) return;
    pendingRefresh_ = g_idle_add(
        +[](gpointer self) -> gboolean {
            static_cast<OutlineWindow*>(self)->pendingRefresh_ = 0;
            static_cast<OutlineWindow*>(self)->refresh();
            return G_SOURCE_REMOVE;
        },
        this);
}

void OutlineWindow::refresh() {
    const Date now = Platform::current().clock().now();
    const auto items = tracker_.itemsFromDate(orvaneDayStart(now), orvaneDayEnd(now));
    // The longest comes first.
    outline_node_fill(nodes_, items, items.empty() ? DecimalSeconds(0) : items.front()->duration());
    DecimalSeconds total{0};
    for (const auto& item : items) total += item->duration();
    const auto minutes = std::chrono::duration_cast<std::chrono::minutes>(total).count();
    const std::string text = total.count() == 0 ? "Nothing recorded today"
                                                : "Recorded today: " + std::to_string(minutes / 60) + " h " +
                                                      std::to_string(minutes % 60) + " min";
    gtk_label_set_text(GTK_LABEL(total_), text.c_str());
}

void OutlineWindow::print() {
    const std::string rows = outline_rows_shown(outline_);
    if (rows == printed_) return;
    printed_ = rows;
    std::cout << rows << std::endl;
}
