#include "DnsProxyExt/settings/SettingsCheck.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <span>
#include <string_view>
#include <utility>

#include "DnsProxyExt/settings/GroupDefaults.h"
#include "DnsProxyExt/settings/IdentityOption.h"
#include "DnsProxyExt/settings/MDMConfigurationManager.h"
#include "DnsProxyExt/settings/VendorSettings.h"
#include "platform/base/EditDistance.h"
#include "platform/base/LetterCase.h"

namespace quillet {

using Findings = std::vector<SettingsFinding>;
using Keys = std::vector<std::string_view>;

namespace {

template <class Row>
void appendKeys(Keys& keys, std::span<const Row> rows) {
  std::transform(rows.begin(), rows.end(), std::back_inserter(keys),
                 [](const Row& row) { return row.key; });
}

Keys vendorKeys() {
  Keys keys(std::begin(MDMConfigurationManager::kOtherKeys),
            std::end(MDMConfigurationManager::kOtherKeys));
  appendKeys(keys, vendorSettings());
  appendKeys(keys, std::span<const ConfiguredIdentity>(kConfiguredIdentity));
  return keys;
}

template <class Rows>
auto rowOf(const Rows& rows, std::string_view key) {
  const auto found =
      std::find_if(rows.begin(), rows.end(), [key](const auto& row) { return row.key == key; });
  return found != rows.end() ? &*found : nullptr;
}

/// The most like one that differs in no more than every third character, letter case aside; or
/// empty.
std::string_view mostLike(std::string_view key, const Keys& known) {
  const auto folded = platform::caseFolded(key);
  std::size_t least = folded.size() / 3 + 1;
  std::string_view best;
  for (const auto candidate : known) {
    if (candidate.size() >= folded.size() + least || folded.size() >= candidate.size() + least) {
      continue;  // and no distance is computed of a key of any length
    }
    const auto distance = platform::editDistance(folded, platform::caseFolded(candidate));
    if (distance < least) {
      least = distance;
      best = candidate;
    }
  }
  return best;
}

std::string wrongType(std::string_view wanted, const platform::JSONValue& value) {
  return "not " + std::string(wanted) + " but of type " + value.type_name();
}

/// The members that the reader had to leave out, and those that it took the last of.
Findings losses(const platform::JSONDocument& document) {
  Findings findings;
  for (const auto& key : document.repeated) {
    findings.push_back({key, "stands twice: the last one counts"});
  }
  for (const auto& [object, member, fault] : document.leftOut) {
    findings.push_back({member, "left out: " + platform::textOf(fault)});
  }
  return findings;
}

void checkVendorKey(Findings& findings, const std::string& key, const Keys& known) {
  const auto name = MDMConfigurationManager::keyFrom(key);
  if (std::find(known.begin(), known.end(), name) == known.end()) {
    const auto meant = mostLike(name, known);
    findings.push_back(
        {key, "unknown key" + (meant.empty() ? "" : "; probably meant: " + std::string(meant))});
  }
}

/// Texts whose key another one becomes too, of which only the last counts.
void checkSameKeys(Findings& findings, const platform::JSONObject& vendorData) {
  std::map<std::string, const std::string*> lastOf;
  for (const auto& [key, value] : vendorData) {
    if (value.is_string()) {
      const auto* former = std::exchange(lastOf[MDMConfigurationManager::keyFrom(key)], &key);
      if (former != nullptr) {
        findings.push_back({*former, "dropped: " + key + " stands for the same setting"});
      }
    }
  }
}

}  // namespace

Findings checkVendorData(const platform::JSONDocument& document, const IsOwnAddress& isOwn) {
  auto findings = losses(document);
  checkSameKeys(findings, document.value.get_ref<const platform::JSONObject&>());
  const auto known = vendorKeys();
  for (const auto& [key, value] : document.value.items()) {
    checkVendorKey(findings, key, known);
    if (!value.is_string()) {
      findings.push_back({key, wrongType("text", value)});
    } else if (const auto* row = rowOf(vendorSettings(), MDMConfigurationManager::keyFrom(key))) {
      for (auto& fault : row->faults(value.get_ref<const std::string&>(), isOwn)) {
        findings.push_back({key, std::move(fault)});
      }
    }
  }
  return findings;
}

Findings checkGroupDefaults(const platform::JSONDocument& document) {
  auto findings = losses(document);
  const std::span<const GroupDefault> rows(kGroupDefaults);
  Keys known;
  appendKeys(known, rows);
  for (const auto& [key, value] : document.value.items()) {
    if (const auto* row = rowOf(rows, key)) {
      if (!(value.*row->hasType)()) {
        findings.push_back({key, wrongType(row->form, value)});
      }
    } else if (const auto meant = mostLike(key, known); !meant.empty()) {
      findings.push_back({key, "unknown key; probably meant: " + std::string(meant)});
    }
  }
  return findings;
}

}  // namespace quillet
