// Arrays and lists beside those of the standard library and of Boost.
#include <veldt20/collections.h>

#include <boost/container/slist.hpp>
#include <boost/container/vector.hpp>
#include <boost/intrusive/list.hpp>
#include <boost/intrusive/slist.hpp>
#include <boost/version.hpp>
#include <cstddef>
#include <forward_list>
#include <list>
#include <memory>
#include <new>
#include <string>

#include "suite/work.h"

namespace veldt::bench {

namespace {

constexpr int kElements = 1000;

/// The time of one element in `call`, which handles kElements.
template <class Call>
Setup PerElement(Call call) {
    return
        [=]() -> Round { return [=]() mutable { return NanosecondsOf(1000, call) / kElements; }; };
}

/// For what can't be copied: `Work` is made in the worker, and called.
template <class Work>
Setup PerElementOf() {
    return []() -> Round {
        auto work = std::make_shared<Work>();
        return [work] { return NanosecondsOf(1000, *work) / kElements; };
    };
}

class Ints : public XDynArrayImp {
  public:
    Ints() : XDynArrayImp(0, sizeof(int), 64) {}
    ~Ints() override { DeleteAll(); }

  protected:
    void CopyConstructElement(const void* source, void* target) override {
        ::new (target) int(*static_cast<const int*>(source));
    }
    void ConstructElements(std::int32_t count, void* target) override {
        std::uninitialized_value_construct_n(static_cast<int*>(target), count);
    }
    void DestructElement(void*) override {}
    void AssignElement(void* target, const void* source) override {
        *static_cast<int*>(target) = *static_cast<const int*>(source);
    }
};

struct FillDynArray {
    void operator()() const {
        Ints ints;
        for (int i = 0; i < kElements; ++i) {
            ints.Append(&i);
        }
        ints.RemoveAll();
    }
};

struct FillHandleArray {
    void operator()() const {
        XHandleArray ints(64, sizeof(int));
        ints.IHandleArray();
        for (int i = 0; i < kElements; ++i) {
            ints.Grow(1);
            reinterpret_cast<int*>(ints.GetArrayPtr())[i] = i;
        }
    }
};

template <class Vector>
struct FillVector {
    void operator()() const {
        Vector ints;
        for (int i = 0; i < kElements; ++i) {
            ints.push_back(i);
            Touch(ints.data());
        }
    }
};

struct InsertIntoHandleArray {
    InsertIntoHandleArray() { ints.IHandleArray(); }
    void operator()() {
        for (int i = 0; i < kElements; ++i) {
            ints.Shift(0, 1);
            *reinterpret_cast<int*>(ints.GetArrayPtr()) = i;
        }
        ints.DeleteAll();
    }
    XHandleArray ints{64, sizeof(int)};
};

template <class Vector>
struct InsertIntoVector {
    void operator()() {
        for (int i = 0; i < kElements; ++i) {
            ints.insert(ints.begin(), i);
        }
        Touch(ints.data());
        ints.clear();
    }
    Vector ints;
};

struct FillPointerList {
    void operator()() const {
        XSinglePtrList list;
        for (int i = 0; i < kElements; ++i) {
            list.AddHead(&list);
        }
    }
};

template <class List>
struct FillList {
    void operator()() const {
        List list;
        for (int i = 0; i < kElements; ++i) {
            list.push_front(&list);
            Touch(&list);
        }
    }
};

struct WalkPointerList {
    WalkPointerList() {
        for (int i = 0; i < kElements; ++i) {
            list.AddHead(this);
        }
    }
    void operator()() {
        for (__XPOSITION* p = list.GetHeadPosition(); p != nullptr;) {
            Touch(list.GetNext(p));
        }
    }
    XSinglePtrList list;
};

template <class List>
struct WalkList {
    WalkList() {
        for (int i = 0; i < kElements; ++i) {
            list.push_front(this);
        }
    }
    void operator()() {
        for (void* value : list) {
            Touch(value);
        }
    }
    List list;
};

namespace intrusive = boost::intrusive;

struct Job : intrusive::list_base_hook<intrusive::link_mode<intrusive::normal_link>>,
             intrusive::slist_base_hook<intrusive::link_mode<intrusive::normal_link>> {
    void* next = nullptr;
    void* prev = nullptr;
};

// The links' places, which offsetof may not be asked for in a type with bases.
const Job kJob;
unsigned int PlaceOf(void* const& link) {
    return static_cast<unsigned int>(reinterpret_cast<const char*>(&link) -
                                     reinterpret_cast<const char*>(&kJob));
}

/// All jobs queued at the tail and taken out again, every second one first.
struct QueueOurs {
    void operator()() {
        for (Job& job : jobs) {
            list.AddTail(&job);
        }
        for (const int first : {0, 1}) {
            for (std::size_t i = static_cast<std::size_t>(first); i < jobs.size(); i += 2) {
                list.RemoveAt(list.Find(&jobs[i], nullptr));
            }
        }
    }
    std::vector<Job> jobs{kElements};
    XIntrusiveDoubleList list{PlaceOf(kJob.next), PlaceOf(kJob.prev)};
};

struct QueueStandard {
    void operator()() {
        for (std::size_t i = 0; i < jobs.size(); ++i) {
            places[i] = list.insert(list.end(), &jobs[i]);
        }
        for (const int first : {0, 1}) {
            for (std::size_t i = static_cast<std::size_t>(first); i < jobs.size(); i += 2) {
                list.erase(places[i]);
            }
        }
    }
    std::vector<Job> jobs{kElements};
    std::list<Job*> list;
    std::vector<std::list<Job*>::iterator> places{kElements};
};

struct QueueBoost {
    void operator()() {
        for (Job& job : jobs) {
            list.push_back(job);
        }
        for (const int first : {0, 1}) {
            for (std::size_t i = static_cast<std::size_t>(first); i < jobs.size(); i += 2) {
                list.erase(list.iterator_to(jobs[i]));
                Touch(&jobs[i]);
            }
        }
    }
    std::vector<Job> jobs{kElements};
    intrusive::list<Job> list;
};

struct StackOurs {
    void operator()() {
        for (Job& job : jobs) {
            list.AddHead(&job);
        }
        while (list.IsEmpty() == 0) {
            Touch(list.RemoveHead());
        }
    }
    std::vector<Job> jobs{kElements};
    XIntrusiveSingleList list{PlaceOf(kJob.next)};
};

template <class List>
struct StackTheirs {
    void operator()() {
        for (Job& job : jobs) {
            list.push_front(Element(job));
        }
        while (!list.empty()) {
            Touch(&list.front());
            list.pop_front();
        }
    }
    static decltype(auto) Element(Job& job) {
        if constexpr (std::is_pointer_v<typename List::value_type>) {
            return &job;
        } else {
            return (job);
        }
    }
    std::vector<Job> jobs{kElements};
    List list;
};

std::string BoostVersion() {
    return std::to_string(BOOST_VERSION / 100000) + "." +
           std::to_string(BOOST_VERSION / 100 % 1000);
}

}  // namespace

Section Collections() {
    using StandardVector = std::vector<int>;
    using BoostVector = boost::container::vector<int>;
    using StandardList = std::forward_list<void*>;
    using BoostList = boost::container::slist<void*>;
    return {
        "Arrays and lists",
        "The time of one of a thousand elements, beside std::vector, std::forward_list, "
        "std::list, and container::vector, container::slist, intrusive::list and intrusive::slist "
        "of Boost " +
            BoostVersion() + ".",
        {{"VELDT20", ""}, {"std", ""}, {"Boost", ""}},
        {{"XDynArrayImp, append",
          {},
          {PerElement(FillDynArray()), PerElement(FillVector<StandardVector>()),
           PerElement(FillVector<BoostVector>())}},
         {"XHandleArray, append",
          {},
          {PerElement(FillHandleArray()), PerElement(FillVector<StandardVector>()),
           PerElement(FillVector<BoostVector>())}},
         {"XHandleArray, insert in front",
          {},
          {PerElementOf<InsertIntoHandleArray>(), PerElementOf<InsertIntoVector<StandardVector>>(),
           PerElementOf<InsertIntoVector<BoostVector>>()}},
         {"XSinglePtrList, add and free",
          {},
          {PerElement(FillPointerList()), PerElement(FillList<StandardList>()),
           PerElement(FillList<BoostList>())}},
         {"XSinglePtrList, walk",
          {},
          {PerElementOf<WalkPointerList>(), PerElementOf<WalkList<StandardList>>(),
           PerElementOf<WalkList<BoostList>>()}},
         {"XIntrusiveDoubleList, queue and take out",
          {},
          {PerElementOf<QueueOurs>(), PerElementOf<QueueStandard>(), PerElementOf<QueueBoost>()}},
         {"XIntrusiveSingleList, push and pop",
          {},
          {PerElementOf<StackOurs>(), PerElementOf<StackTheirs<std::forward_list<Job*>>>(),
           PerElementOf<StackTheirs<intrusive::slist<Job>>>()}}}};
}

}  // namespace veldt::bench
