// Tells the windows on screen over the session bus. What follows this file in extension.js gives it the shell's
// modules, since releases differ in how they are had.

const BUS_NAME = 'org.orvane.Windows1';
const OBJECT_PATH = '/org/orvane/Windows1';

// A number in the names stands for what old clients rely on; Revision counts additions that they can ignore.
const REVISION = 1;

const INTERFACE = `<node>
  <interface name="${BUS_NAME}">
    <method name="GetWindows">
      <arg type="t" direction="out" name="active"/>
      <arg type="aa{sv}" direction="out" name="windows"/>
    </method>
    <signal name="Changed"/>
    <property name="Revision" type="u" access="read"/>
  </interface>
</node>`;

// Windows change in bursts; one notice for each is enough.
const NOTICE_DELAY = 20;

const Layer = {BELOW: -1, NORMAL: 0, FLOATING: 3, DOCK: 20, MENU: 24};

// eslint-disable-next-line no-unused-vars
class OrvaneWindows {
    constructor(modules) {
        this._modules = modules;
        this._connections = [];
        this._windows = new Map();
        this._timer = 0;
    }

    start() {
        const {Gio, Main} = this._modules;
        this._object = Gio.DBusExportedObject.wrapJSObject(INTERFACE, this);
        this._object.export(Gio.DBus.session, OBJECT_PATH);
        this._name = Gio.DBus.session.own_name(BUS_NAME, Gio.BusNameOwnerFlags.NONE, null, null);

        const changed = () => this._changedSoon();
        this._connect(global.display, 'window-created', (_display, window) => {
            this._watch(window);
            changed();
        });
        this._connect(global.display, 'notify::focus-window', changed);
        this._connect(global.display, 'restacked', changed);
        this._connect(global.workspace_manager, 'active-workspace-changed', changed);
        this._connect(global.workspace_manager, 'showing-desktop-changed', changed);
        this._connect(Main.overview, 'showing', changed);
        this._connect(Main.overview, 'hidden', changed);
        this._connect(Main.sessionMode, 'updated', changed);
        for (const window of this._allWindows())
            this._watch(window);
    }

    stop() {
        const {Gio, GLib} = this._modules;
        if (this._timer !== 0)
            GLib.source_remove(this._timer);
        this._timer = 0;
        for (const [object, id] of this._connections)
            object.disconnect(id);
        this._connections = [];
        for (const [window, ids] of this._windows)
            ids.forEach(id => window.disconnect(id));
        this._windows.clear();
        Gio.DBus.session.unown_name(this._name);
        this._object.unexport();
        this._object = null;
    }

    get Revision() {
        return REVISION;
    }

    GetWindows() {
        const active = this._activeWindow();
        const windows = this._allWindows().filter(window => this._isOnScreen(window));
        return [active ? active.get_id() : 0, windows.map(window => this._describe(window))];
    }

    _connect(object, signal, handler) {
        this._connections.push([object, object.connect(signal, handler)]);
    }

    _watch(window) {
        if (this._windows.has(window))
            return;
        const changed = () => this._changedSoon();
        const signals = ['notify::title', 'notify::wm-class', 'notify::gtk-application-id',
            'notify::minimized', 'notify::above', 'notify::window-type', 'workspace-changed', 'shown'];
        const ids = [];
        for (const signal of signals) {
            // Not every release has each of them.
            try {
                ids.push(window.connect(signal, changed));
            } catch (error) {
                continue;
            }
        }
        ids.push(window.connect('unmanaged', () => {
            (this._windows.get(window) ?? []).forEach(id => window.disconnect(id));
            this._windows.delete(window);
            changed();
        }));
        this._windows.set(window, ids);
    }

    _changedSoon() {
        const {GLib} = this._modules;
        if (this._timer !== 0)
            return;
        this._timer = GLib.timeout_add(GLib.PRIORITY_DEFAULT, NOTICE_DELAY, () => {
            this._timer = 0;
            this._object.emit_signal('Changed', null);
            return GLib.SOURCE_REMOVE;
        });
    }

    // Front to back.
    _allWindows() {
        return global.get_window_actors().map(actor => actor.meta_window).filter(window => window).reverse();
    }

    _isOnScreen(window) {
        const {Meta} = this._modules;
        if (window.get_window_type() === Meta.WindowType.DESKTOP)
            return false;
        if (window.is_override_redirect())
            return true;
        return !window.minimized && window.showing_on_its_workspace() &&
            window.located_on_workspace(global.workspace_manager.get_active_workspace());
    }

    _activeWindow() {
        const {Main} = this._modules;
        if (Main.sessionMode.isLocked || Main.overview.visible)
            return null;
        const window = global.display.get_focus_window();
        return window && this._isOnScreen(window) ? window : null;
    }

    _layer(window) {
        const {Meta} = this._modules;
        switch (window.get_window_type()) {
        case Meta.WindowType.NORMAL:
        case Meta.WindowType.DIALOG:
        case Meta.WindowType.MODAL_DIALOG:
            return window.is_above() ? Layer.FLOATING : Layer.NORMAL;
        case Meta.WindowType.TOOLBAR:
        case Meta.WindowType.UTILITY:
        case Meta.WindowType.SPLASHSCREEN:
            return Layer.FLOATING;
        case Meta.WindowType.DOCK:
            return Layer.DOCK;
        case Meta.WindowType.DESKTOP:
            return Layer.BELOW;
        default:
            return Layer.MENU;
        }
    }

    _describe(window) {
        const {GLib} = this._modules;
        const description = {
            number: new GLib.Variant('t', window.get_id()),
            process: new GLib.Variant('i', Math.max(0, window.get_pid())),
            layer: new GLib.Variant('i', this._layer(window)),
        };
        const texts = {
            title: window.get_title(),
            class: window.get_wm_class(),
            instance: window.get_wm_class_instance(),
            'gtk-application-id': window.get_gtk_application_id(),
        };
        for (const [key, text] of Object.entries(texts)) {
            if (text)
                description[key] = new GLib.Variant('s', text);
        }
        return description;
    }
}
