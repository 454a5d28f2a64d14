// The platform's keyed table: a chained hash table of one-word keys and
// one-word values. Subclasses override hash and keyCmp to key by something
// other than the word itself (text, for example); the table hashes and
// compares keys only through those virtual functions.
//
// A word is an unsigned long: as wide as a pointer on 32- and 64-bit Linux,
// and the same type on both, so the library's exported names do not change
// with the word size.
#ifndef SKIFF_PLATFORM_QXHASH_H_
#define SKIFF_PLATFORM_QXHASH_H_

class _HashIter;

// One entry: the value, the key and the next entry of the same bucket.
class _HashItem {
 public:
  unsigned long data() const { return _data; }
  unsigned long key() const { return _key; }

  unsigned long _data;
  unsigned long _key;
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
  virtual unsigned int hash(unsigned long key);
  // 0 when the key held by the table equals the key looked for; the base
  // compares the words.
  virtual int keyCmp(unsigned long tabKey, unsigned long searchKey);
  // 0 when two values are equal; the base compares the words.
  virtual int dataCmp(unsigned long a, unsigned long b);

  // Adds an entry, or replaces the value of the entry whose key is equal.
  void insert(unsigned long key, unsigned long data);
  // The entry whose key is equal, or null.
  _HashItem* find(unsigned long key);
  // Removes the entry whose key is equal; 1 if there was one.
  int remove(unsigned long key);
  // 1 when an entry with an equal key exists.
  int isIn(unsigned long key);
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

  _HashItem** bucketOf(unsigned long key);
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
