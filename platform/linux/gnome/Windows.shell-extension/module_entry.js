
// Entry for GNOME Shell 45 and later.
import Gio from 'gi://Gio';
import GLib from 'gi://GLib';
import Meta from 'gi://Meta';
import * as Main from 'resource:///org/gnome/shell/ui/main.js';

export default class OrvaneExtension {
    enable() {
        this._windows = new OrvaneWindows({Gio, GLib, Meta, Main});
        this._windows.start();
    }

    // Runs on the lock screen too, where no window is the active one: to go away would look like a crash.
    disable() {
        this._windows.stop();
        this._windows = null;
    }
}
