// A program that only waits, to measure trackers against: what the main loop costs by itself.

#include <glib.h>

int main() {
    GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
    g_main_loop_run(loop);
}
