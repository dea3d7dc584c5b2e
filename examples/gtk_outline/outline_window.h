#pragma once

#include <gtk/gtk.h>
#include <orvane/orvane.h>

/// A window with today's use as an outline of groups and applications, which follows the recording.
class OutlineWindow {
  public:
    /// The tracker must outlive the window. With `prints`, what the rows show is printed whenever it is
    /// something else than before, with an empty line at the end.
    OutlineWindow(GtkApplication* application, orvane::Orvane& tracker, bool prints);
    ~OutlineWindow();
    OutlineWindow(const OutlineWindow&) = delete;
    OutlineWindow& operator=(const OutlineWindow&) = delete;

  private:
    void refreshSoon();
    void refresh();
    void print();

    orvane::Orvane& tracker_;
    orvane::ManagedObjectContext* context_;  // the tracker's; none when the store cannot be opened
    GtkWidget* window_;
    GtkWidget* outline_;
    GtkWidget* total_;
    GListStore* nodes_;
    guint pendingRefresh_ = 0;
    const bool prints_;
    std::string printed_;
};
