#pragma once

#include <gtk/gtk.h>

#include <string>

// The outline's columns. Each shows what the items hold under a key.

/// "name", beside the colour and, for a group, the arrow that opens it.
GtkColumnViewColumn* outline_name_column();
/// "duration", as a bar in the item's "colorValue".
GtkColumnViewColumn* outline_bar_column();
/// "duration", in hours, minutes and seconds.
GtkColumnViewColumn* outline_duration_column();

/// What the rows within the widget show at present, from top to bottom: depth, colour, name and duration in a
/// line for each, divided by tabulators.
std::string outline_rows_shown(GtkWidget* view);
