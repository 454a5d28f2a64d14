// The platform's keyed table: a chained hash table of one-word keys and
// one-word values. Subclasses override hash and keyCmp to key by something
// other than the word itself (text, for example); the table hashes and
// compares keys only through those virtual functions.
#ifndef SKIFF_PLATFORM_QXHASH_H_
#define SKIFF_PLATFORM_QXHASH_H_

#include <stdint.h>

class _HashIter;

// One entry: the value, the key and the next entry of the same bucket.
class _HashItem {
 public:
  uintptr_t data() const { return _data; }
  uintptr_t key() const { return _key; }

  uintptr_t _data;
  uintptr_t _key;
  _HashItem* _next;
};

class _Hash {
 public:
  // `initialBuckets` is the starting bucket count and `growAtLoad` the load
  // (entries per bucket) above which the table doubles. The two middle
  // arguments are kept for compatibility and not used.
  _Hash(int initialBuckets, int reserved1, int reserved2, float growAtLoad);
  // Releases the entries; keys and values are the subclass's to release.
  virtual ~_Hash();

  // The hash of a key; the base uses the key word itself.
  virtual unsigned int hash(uintptr_t key);
  // 0 when the key held by the table equals the key looked for; the base
  // compares the words.
  virtual int keyCmp(uintptr_t tabKey, uintptr_t searchKey);
  // 0 when two values are equal; the base compares the words.
  virtual int dataCmp(uintptr_t a, uintptr_t b);

  // Adds an entry, or replaces the value of the entry whose key is equal.
  void insert(uintptr_t key, uintptr_t data);
  // The entry whose key is equal, or null.
  _HashItem* find(uintptr_t key);
  // Removes the entry whose key is equal; 1 if there was one.
  int remove(uintptr_t key);
  // 1 when an entry with an equal key exists.
  int isIn(uintptr_t key);
  // The number of entries.
  int size() const { return _count; }
  // Ends the iteration mark set by a _HashIter.
  void clearIterating() { _iterating = 0; }
  // 1 while an iterator is alive on the table.
  int isIterating() const { return _iterating; }

  _Hash(const _Hash&) = delete;
  _Hash& operator=(const _Hash&) = delete;

 private:
  friend class _HashIter;

  _HashItem** bucketOf(uintptr_t key);
  void grow();

  _HashItem** _buckets;
  int _numBuckets;
  int _count;
  float _growAtLoad;
  int _iterating;
};

// Walks the entries of a table in bucket order. Marks the table as being
// iterated while it lives; nothing may insert into or remove from the table
// meanwhile.
class _HashIter {
 public:
  explicit _HashIter(_Hash& table);
  explicit _HashIter(_Hash* table) : _HashIter(*table) {}
  ~_HashIter();

  // The current entry, or null when the iteration is over.
  _HashItem* operator()() const { return curSym; }
  // Advances and returns the new current entry.
  _HashItem* operator++() { return incr(); }
  _HashItem* incr();

  int bucketIndex;
  _Hash* tab;
  _HashItem** curBucket;
  _HashItem* curSym;

  _HashIter(const _HashIter&) = delete;
  _HashIter& operator=(const _HashIter&) = delete;

 private:
  void settle();
};

#endif  // SKIFF_PLATFORM_QXHASH_H_
