
// Entry for GNOME Shell 42 to 44.
const {Gio, GLib, Meta} = imports.gi;
const Main = imports.ui.main;

class Extension {
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

// eslint-disable-next-line no-unused-vars
function init() {
    return new Extension();
}
