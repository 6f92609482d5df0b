// The host state of the objects of one recorder interface class. The
// interface headers declare only what callers use, so the state an object
// needs lives here, by the object's address, from its constructor to its
// destructor.
#ifndef RECORDER_HOST_OBJECT_STATES_H_
#define RECORDER_HOST_OBJECT_STATES_H_

#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>

template <typename Object, typename State>
class ObjectStates {
 public:
  // Never destroyed, so that an object torn down after main returns still
  // finds its state.
  static ObjectStates& Instance() {
    static ObjectStates* const states = new ObjectStates;
    return *states;
  }

  State& Add(const Object* object, std::unique_ptr<State> state) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return *(states_[object] = std::move(state));
  }

  // The state of a constructed object that is not yet destroyed.
  State& Of(const Object* object) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return *states_.find(object)->second;
  }

  void Remove(const Object* object) {
    std::unique_ptr<State> state;
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      const auto found = states_.find(object);
      state = std::move(found->second);
      states_.erase(found);
    }
  }

 private:
  std::mutex mutex_;
  std::unordered_map<const Object*, std::unique_ptr<State>> states_;
};

#endif  // RECORDER_HOST_OBJECT_STATES_H_
