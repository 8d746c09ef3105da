#include "host/base/object.h"

#include <maya/MObjectHandle.h>

#include <cstdint>

namespace host {

Object::~Object() = default;

bool Object::has_fn(MFn::Type type) const {
    if (type_ == MFn::kMeshData && type == MFn::kMesh)
        return true;
    for (MFn::Type t = type_; t != MFn::kInvalid; t = type_above(t))
        if (t == type)
            return true;
    return false;
}

} // namespace host

MObject MObject::kNullObj;

MObject::MObject() : object_(nullptr) {}

MObject::MObject(host::Object* object) : object_(object) {
    if (object_ != nullptr)
        object_->retain();
}

MObject::MObject(const MObject& other) : MObject(other.object_) {}

MObject::MObject(MObject&& other) noexcept : object_(other.object_) { other.object_ = nullptr; }

MObject& MObject::operator=(const MObject& other) {
    if (object_ != other.object_)
        *this = MObject(other);
    return *this;
}

MObject& MObject::operator=(MObject&& other) noexcept {
    if (this != &other) {
        host::Object* const old = object_;
        object_ = other.object_;
        other.object_ = nullptr;
        if (old != nullptr)
            old->release();
    }
    return *this;
}

MObject::~MObject() {
    if (object_ != nullptr)
        object_->release();
}

bool MObject::isNull() const { return object_ == nullptr; }

bool MObject::hasFn(MFn::Type type) const { return object_ != nullptr && object_->has_fn(type); }

MFn::Type MObject::apiType() const { return object_ == nullptr ? MFn::kInvalid : object_->type(); }

const char* MObject::apiTypeStr() const { return host::type_text(apiType()); }

bool MObject::operator==(const MObject& other) const { return object_ == other.object_; }
bool MObject::operator!=(const MObject& other) const { return object_ != other.object_; }

MObjectHandle::MObjectHandle() = default;
MObjectHandle::MObjectHandle(const MObject& object) : object_(object) {}
MObjectHandle::MObjectHandle(const MObjectHandle& other) = default;
MObjectHandle& MObjectHandle::operator=(const MObjectHandle& other) = default;
MObjectHandle& MObjectHandle::operator=(const MObject& object) {
    object_ = object;
    return *this;
}
MObjectHandle::~MObjectHandle() = default;

MObject MObjectHandle::object() const { return isValid() ? object_ : MObject(); }
const MObject& MObjectHandle::objectRef() const { return object_; }

bool MObjectHandle::isValid() const {
    return !object_.isNull() && object_.host_object()->is_valid();
}

bool MObjectHandle::isAlive() const {
    return !object_.isNull() && object_.host_object()->is_alive();
}

unsigned int MObjectHandle::hashCode() const {
    const auto address = reinterpret_cast<std::uintptr_t>(object_.host_object());
    return static_cast<unsigned int>(address >> 4) ^ static_cast<unsigned int>(address >> 36);
}

bool MObjectHandle::operator==(const MObjectHandle& other) const {
    return object_ == other.object_;
}
bool MObjectHandle::operator==(const MObject& object) const { return object_ == object; }
bool MObjectHandle::operator!=(const MObjectHandle& other) const { return !(*this == other); }
bool MObjectHandle::operator!=(const MObject& object) const { return !(*this == object); }
