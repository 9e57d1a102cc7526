// SPDX-License-Identifier: MIT
//
// The one reader of property lists: finds the sections of a flat list of texts.
//
// Grammar; separators are whole elements, sections may come in any order and repeat:
//   property set  "_p_" "_o_" TYPE PATH...             up to "_p_" "_t_" "_m_" "_co_" or the end
//   traversal     "_t_" NAME "_o_" TYPE "_p_" PATH ["_x_"] ("_s_" NAME)...
//   cache types   "_co_" TYPE...                       up to the next separator of a section
//   methods       "_m_" METHOD...                      up to the next separator of a section
// What comes before the first separator, and what a section cannot use, is passed over. A section
// that lacks an operand is remembered as an error, which the functions that write the section
// throw.
//
// Ownership: keeps positions only; the list must outlive it, unchanged.
#ifndef KECPP_DATASYNC_PROPERTYLIST_H
#define KECPP_DATASYNC_PROPERTYLIST_H

#include <vector>

#include "foundation/KEString.h"
#include "foundation/KEVector.h"

namespace KE::Service {

class PropertyList {
 public:
  struct PropertySet {
    unsigned int type;
    std::vector<unsigned int> paths;
  };
  struct Traversal {
    unsigned int name;
    unsigned int type;
    unsigned int path;
    bool skip;
    std::vector<unsigned int> selects;
  };

  explicit PropertyList(KELib::KEVector<KELib::KEString>& list);

  // The element at a position that one of the sections holds.
  KELib::KEString& At(unsigned int index) const { return list[index]; }

  std::vector<PropertySet> propertySets;
  std::vector<Traversal> traversals;
  std::vector<unsigned int> cacheTypes;
  std::vector<unsigned int> methods;
  bool hasPropertySet = false;             // also when it lacks its operands
  const char* propertySetError = nullptr;  // text of the first broken property set
  const char* traversalError = nullptr;    // text of the first broken traversal

  // True for the one list that watches a server task: four elements, the third "Task".
  bool IsTaskWatch() const;

 private:
  bool Is(unsigned int index, const char* separator) const;
  bool IsSectionStart(unsigned int index) const;
  bool TakeOperand(const char* separator, unsigned int& operand);
  void ReadPropertySet();
  void ReadTraversal();
  void SkipTraversal(const char* error);
  void ReadNames(std::vector<unsigned int>& names);

  KELib::KEVector<KELib::KEString>& list;
  unsigned int next = 0;
};

}  // namespace KE::Service

#endif
