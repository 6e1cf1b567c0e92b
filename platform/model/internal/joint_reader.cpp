#include "platform/model/internal/joint_reader.h"

#include <cstddef>
#include <map>
#include <set>
#include <utility>

#include "platform/model/internal/joint_element.h"

namespace QV::Model::detail {
namespace {

constexpr int kMaxMimicChain = 16;

/** A joint, and where it stands in the document. */
struct Entry {
  const XMLElement* element;
  JointConfig config;
};

const Entry& leaderOf(const Entry& entry, const std::map<std::string, const Entry*>& byName) {
  const auto found = byName.find(entry.config.mimic->joint);
  if (found == byName.end() || !hasPosition(found->second->config.type)) {
    fail(*entry.element, "a mimic of a revolute, continuous or prismatic joint expected, " +
                             withQuotes(entry.config.mimic->joint) + " is none");
  }
  return *found->second;
}

// A mimic of a mimic becomes one of the joint at the end of the chain.
JointMimic resolvedMimic(const Entry& entry, const std::map<std::string, const Entry*>& byName) {
  if (!hasPosition(entry.config.type)) {
    fail(*entry.element,
         "a joint that is revolute, continuous or prismatic expected, "
         "others cannot mimic");
  }
  JointMimic result = *entry.config.mimic;
  const Entry* leader = &leaderOf(entry, byName);
  for (int step = 0; leader->config.mimic; ++step) {
    if (step == kMaxMimicChain) {
      fail(*entry.element,
           "a mimic that ends at a joint that moves by itself expected, none within " +
               std::to_string(kMaxMimicChain) + " steps");
    }
    const JointMimic& next = *leader->config.mimic;
    result = {next.joint, result.multiplier * next.multiplier,
              result.multiplier * next.offset + result.offset};
    leader = &leaderOf(*leader, byName);
  }
  return result;
}

void resolveMimics(std::vector<Entry>& entries) {
  const std::vector<Entry> original = entries;
  std::map<std::string, const Entry*> byName;
  for (const Entry& entry : original) byName[entry.config.name] = &entry;
  for (Entry& entry : entries) {
    if (entry.config.mimic) entry.config.mimic = resolvedMimic(entry, byName);
  }
}

std::vector<Entry> readEntries(const XMLElement& robot, const LinkElements& links) {
  std::set<std::string> names;
  std::vector<Entry> entries;
  for (const XMLElement* element : childrenOf(robot, "joint")) {
    entries.push_back({element, readJoint(*element, links)});
    const std::string& name = entries.back().config.name;
    if (!names.insert(name).second) {
      fail(*element, "a name of its own expected, another joint is called " + withQuotes(name));
    }
  }
  resolveMimics(entries);
  return entries;
}

std::string findRoot(const std::vector<Entry>& entries, const LinkElements& links) {
  std::map<std::string, const Entry*> carriers;
  for (const Entry& entry : entries) {
    const auto [other, isFirst] = carriers.try_emplace(entry.config.childLink, &entry);
    if (!isFirst) {
      fail(*entry.element, "a child link that hangs on no other joint expected, " +
                               withQuotes(entry.config.childLink) + " hangs on " +
                               withQuotes(other->second->config.name));
    }
  }
  std::string root;
  for (const auto& [name, link] : links) {
    if (carriers.contains(name)) continue;
    if (!root.empty()) {
      fail(*link, "one root expected, " + withQuotes(root) + " and " + withQuotes(name) +
                      " both hang on no joint");
    }
    root = name;
  }
  return root;
}

std::vector<JointConfig> parentsFirst(const std::vector<Entry>& entries, const std::string& root) {
  std::multimap<std::string, const Entry*> byParent;
  for (const Entry& entry : entries) byParent.emplace(entry.config.parentLink, &entry);
  std::vector<JointConfig> ordered;
  std::size_t next = 0;
  for (std::string link = root;; link = ordered[next++].childLink) {
    const auto [begin, end] = byParent.equal_range(link);
    for (auto child = begin; child != end; ++child) ordered.push_back(child->second->config);
    byParent.erase(begin, end);
    if (next == ordered.size()) break;
  }
  if (!byParent.empty()) {
    const Entry& lost = *byParent.begin()->second;
    fail(*lost.element, "a joint that leads to the root expected, " + withQuotes(lost.config.name) +
                            " is part of a loop or behind one");
  }
  return ordered;
}

}  // namespace

JointTree readJoints(const XMLElement& robot, const LinkElements& links) {
  const std::vector<Entry> entries = readEntries(robot, links);
  JointTree tree;
  tree.rootLink = findRoot(entries, links);
  tree.joints = parentsFirst(entries, tree.rootLink);
  return tree;
}

}  // namespace QV::Model::detail
