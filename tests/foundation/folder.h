#pragma once

#include <optional>
#include <string>
#include <vector>

#include "foundation/key_conversion.h"

namespace orvane {

/// A folder with a parent and children: an object with keys of most kinds, dependencies along objects and two
/// keys that depend on each other.
class Folder : public KeyedObject {
  public:
    explicit Folder(std::string name = "", std::int64_t size = 0) : name_(std::move(name)), size_(size) {}

    const KeyTable& keyTable() const override {
        static const KeyTable base("Item", nullptr,
                                   {keys::readWrite<"name", &Folder::name, &Folder::setName>()});
        static const KeyTable table("Folder", &base,
                                    {keys::readWrite<"size", &Folder::size, &Folder::setSize>({"twin"}),
                                     keys::readWrite<"shared", &Folder::shared, &Folder::setShared>(),
                                     keys::readWrite<"age", &Folder::age, &Folder::setAge>(),
                                     keys::readWrite<"parent", &Folder::parent, &Folder::setParent>(),
                                     keys::readWrite<"children", &Folder::children, &Folder::setChildren>(),
                                     keys::readOnly<"title", &Folder::title>({"path"}),
                                     keys::readOnly<"path", &Folder::path>({"name", "parent.path"}),
                                     keys::readOnly<"twin", &Folder::size>({"size"})});
        return table;
    }

    const std::string& name() const { return name_; }
    void setName(const std::string& name) { change("name", name_, name); }
    std::int64_t size() const { return size_; }
    void setSize(std::int64_t size) { change("size", size_, size); }
    bool shared() const { return shared_; }
    void setShared(bool shared) { change("shared", shared_, shared); }
    std::optional<DecimalSeconds> age() const { return age_; }
    void setAge(std::optional<DecimalSeconds> age) { change("age", age_, age); }
    Ref<Folder> parent() const { return parent_; }
    void setParent(Ref<Folder> parent) { change("parent", parent_, std::move(parent)); }
    const std::vector<Ref<Folder>>& children() const { return children_; }
    void setChildren(std::vector<Ref<Folder>> children) {
        change("children", children_, std::move(children));
    }

    std::string path() const { return (parent_ ? parent_->path() : "") + "/" + name_; }
    std::string title() const { return "<" + path() + ">"; }

  private:
    template <class T>
    void change(std::string_view key, T& member, T value) {
        willChangeValueForKey(key);
        member = std::move(value);
        didChangeValueForKey(key);
    }

    std::string name_;
    std::int64_t size_;
    bool shared_ = false;
    std::optional<DecimalSeconds> age_;
    Ref<Folder> parent_;
    std::vector<Ref<Folder>> children_;
};

}  // namespace orvane
