// The platform's keyed table.
#include <stdint.h>

#include <algorithm>

#include "platform/qxhash.h"

_Hash::_Hash(int initialBuckets, int, int, float growAtLoad)
    : _numBuckets(std::max(initialBuckets, 1)),
      _count(0),
      _growAtLoad(growAtLoad > 0 ? growAtLoad : 0.333f),
      _iterating(0) {
  _buckets = new _HashItem*[_numBuckets]();
}

_Hash::~_Hash() {
  for (int i = 0; i < _numBuckets; ++i) {
    for (_HashItem* item = _buckets[i]; item != nullptr;) {
      _HashItem* next = item->_next;
      delete item;
      item = next;
    }
  }
  delete[] _buckets;
}

unsigned int _Hash::hash(unsigned long key) {
  return static_cast<unsigned int>(key ^ (static_cast<uint64_t>(key) >> 32));
}

int _Hash::keyCmp(unsigned long tabKey, unsigned long searchKey) { return tabKey != searchKey; }

int _Hash::dataCmp(unsigned long a, unsigned long b) { return a != b; }

_HashItem** _Hash::bucketOf(unsigned long key) {
  return &_buckets[hash(key) % static_cast<unsigned int>(_numBuckets)];
}

void _Hash::insert(unsigned long key, unsigned long data) {
  _HashItem** bucket = bucketOf(key);
  for (_HashItem* item = *bucket; item != nullptr; item = item->_next) {
    if (keyCmp(item->_key, key) == 0) {
      item->_data = data;
      return;
    }
  }
  *bucket = new _HashItem{data, key, *bucket};
  ++_count;
  if (!_iterating && _count > _growAtLoad * static_cast<float>(_numBuckets)) grow();
}

void _Hash::grow() {
  int oldCount = _numBuckets;
  _HashItem** old = _buckets;
  _numBuckets = oldCount * 2;
  _buckets = new _HashItem*[_numBuckets]();
  for (int i = 0; i < oldCount; ++i) {
    for (_HashItem* item = old[i]; item != nullptr;) {
      _HashItem* next = item->_next;
      _HashItem** bucket = bucketOf(item->_key);
      item->_next = *bucket;
      *bucket = item;
      item = next;
    }
  }
  delete[] old;
}

_HashItem* _Hash::find(unsigned long key) {
  for (_HashItem* item = *bucketOf(key); item != nullptr; item = item->_next) {
    if (keyCmp(item->_key, key) == 0) return item;
  }
  return nullptr;
}

int _Hash::remove(unsigned long key) {
  for (_HashItem** link = bucketOf(key); *link != nullptr; link = &(*link)->_next) {
    if (keyCmp((*link)->_key, key) == 0) {
      _HashItem* item = *link;
      *link = item->_next;
      delete item;
      --_count;
      return 1;
    }
  }
  return 0;
}

int _Hash::isIn(unsigned long key) { return find(key) != nullptr ? 1 : 0; }

_HashIter::_HashIter(_Hash& table)
    : bucketIndex(0), tab(&table), curBucket(&table._buckets[0]), curSym(table._buckets[0]) {
  table._iterating = 1;
  settle();
}

_HashIter::~_HashIter() { tab->clearIterating(); }

void _HashIter::settle() {
  while (curSym == nullptr && bucketIndex + 1 < tab->_numBuckets) {
    ++bucketIndex;
    curBucket = &tab->_buckets[bucketIndex];
    curSym = *curBucket;
  }
}

_HashItem* _HashIter::incr() {
  if (curSym != nullptr) {
    curSym = curSym->_next;
    settle();
  }
  return curSym;
}
