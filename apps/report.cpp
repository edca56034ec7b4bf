#include "apps/report.h"

#include <algorithm>
#include <atomic>
#include <cctype>
#include <charconv>
#include <cstdio>
#include <map>
#include <set>
#include <string_view>
#include <tuple>

#include "apps/json.h"
#include "apps/options.h"
#include "apps/output.h"
#include "apps/plot.h"
#include "apps/report_assets.h"
#include "contract/bostrel/strings.h"
#include "contract/quarnel/readers.h"
#include "korvex/fpkinds.h"
#include "korvex/lingo.h"
#include "korvex/threads.h"

namespace KorvexProgram {

namespace {

// ---- formulae

// The letters are counts: of a, of b, of both, and of all positions.
constexpr auto formulae = std::to_array<const char*>({
    "both / (a + b - both)",
    "both / sqrt(a * b)",
    "2 * both / (a + b)",
    "sqrt((all - a - b + 2 * both) / all)",
    "both / (alpha * (a - both) + beta * (b - both) + both)",
    "(a + b - 2 * both) / all",
});
static_assert(formulae.size() == ZQSimMeasure::Number::End - 1);

// With as many digits as it has.
std::string Shortest(float number) {
  std::array<char, 32> text{};
  return {text.data(), std::to_chars(text.begin(), text.end(), number).ptr};
}

// The formula of a measure, and the same with numbers in place of letters.
std::string TellFormula(const ReportMeasure& measure, unsigned int a, unsigned int b,
                        unsigned int both, unsigned int all) {
  const std::map<std::string, std::string> numbers{
      {"a", std::to_string(a)},           {"b", std::to_string(b)},
      {"both", std::to_string(both)},     {"all", std::to_string(all)},
      {"alpha", Shortest(measure.alpha)}, {"beta", Shortest(measure.beta)}};
  const std::string formula = formulae[measure.number - 1];
  std::string filled;
  for (std::size_t at = 0; at < formula.size();) {
    const auto isLetter = [&](std::size_t place) {
      return place < formula.size() &&
             std::isalpha(static_cast<unsigned char>(formula[place])) != 0;
    };
    std::size_t end = at;
    while (isLetter(end)) ++end;
    const auto found = numbers.find(formula.substr(at, end - at));
    if (found != numbers.end()) {
      filled += found->second;
    } else {
      end = std::max(end, at + 1);
      filled += formula.substr(at, end - at);
    }
    at = end;
  }
  return formula + " = " + filled;
}

// ---- fragments

// Collects the places of a fragment in one molecule.
class Places {
 public:
  void Add(Marks place) {
    std::ranges::sort(place.atoms);
    marks_.atoms.insert(marks_.atoms.end(), place.atoms.begin(), place.atoms.end());
    marks_.bonds.insert(marks_.bonds.end(), place.bonds.begin(), place.bonds.end());
    places_.insert(std::move(place.atoms));
  }
  unsigned int Count() const { return static_cast<unsigned int>(places_.size()); }
  Marks Take() {
    for (auto* indices : {&marks_.atoms, &marks_.bonds}) {
      std::ranges::sort(*indices);
      indices->erase(std::unique(indices->begin(), indices->end()), indices->end());
    }
    return std::move(marks_);
  }

 private:
  Marks marks_;
  std::set<std::vector<unsigned int>> places_;
};

// Groups places by a key, in the order in which keys first appear.
template <class Key>
class Groups {
 public:
  std::array<Places, 2>& operator[](const Key& key) {
    const auto [found, isNew] = numbers_.try_emplace(key, places_.size());
    if (isNew) {
      keys_.push_back(key);
      places_.emplace_back();
    }
    return places_[found->second];
  }
  const std::vector<Key>& Keys() const { return keys_; }

 private:
  std::map<Key, std::size_t> numbers_;
  std::vector<Key> keys_;
  std::vector<std::array<Places, 2>> places_;
};

template <class Items>
std::vector<unsigned int> IndicesOf(const Items& items) {
  std::vector<unsigned int> indices;
  indices.reserve(items.size());
  for (const auto* item : items) indices.push_back(item->GetIdx());
  return indices;
}

// The share of a part in all items that satisfy a condition.
template <class Iter, class Condition>
double ShareOf(std::size_t part, Iter items, Condition condition) {
  std::size_t all = 0;
  for (; items; ++items) all += condition(*items);
  return all == 0 ? 0.0 : static_cast<double>(part) / static_cast<double>(all);
}

bool HasHeavyEnds(const ZQBondBase& bond) {
  return !bond.GetBgn()->IsHydrogen() && !bond.GetEnd()->IsHydrogen();
}

// ---- text in XML and JSON

std::string Element(const char* name, const std::string& attributes, const std::string& content) {
  std::string text = std::string("<") + name;
  if (!attributes.empty()) text += " " + attributes;
  return text + ">" + content + "</" + name + ">";
}

// The JSON as it can be in a script element of HTML and XML.
std::string Embedded(const JsonWriter& data) {
  std::string safe;
  for (const char c : data.Get()) {
    if (c == '<' || c == '>' || c == '&') {
      safe += c == '<' ? "\\u003c" : c == '>' ? "\\u003e" : "\\u0026";
    } else {
      safe += c;
    }
  }
  return safe;
}

void WriteText(JsonWriter& writer, const char* key, const std::string& text) {
  writer.Key(key);
  writer.Text(TsvField(text));
}

void WriteMarks(JsonWriter& writer, const Marks& marks) {
  writer.Numbers(marks.atoms);
  writer.Numbers(marks.bonds);
}

// The fragments of all pairs of a page, each with its places in the first molecule, once.
class FragmentTable {
 public:
  unsigned int Find(const ReportFragment& fragment) {
    const auto key =
        std::tuple(fragment.text, fragment.bit, fragment.marks[0].atoms, fragment.marks[0].bonds);
    const auto [found, isNew] =
        numbers_.try_emplace(key, static_cast<unsigned int>(fragments_.size()));
    if (isNew) fragments_.push_back(&fragment);
    return found->second;
  }

  void Write(JsonWriter& writer) const {
    writer.Array([&] {
      for (const ReportFragment* fragment : fragments_) {
        writer.Object([&] {
          WriteText(writer, "text", fragment->text);
          writer.Key("size");
          writer.Number(fragment->size);
          writer.Key("times");
          writer.Number(fragment->times[0]);
          if (fragment->bit >= 0) {
            writer.Key("bit");
            writer.Number(static_cast<unsigned int>(fragment->bit));
          }
          writer.Key("marks");
          writer.Array([&] { WriteMarks(writer, fragment->marks[0]); });
        });
      }
    });
  }

 private:
  using Key = std::tuple<std::string, int, std::vector<unsigned int>, std::vector<unsigned int>>;

  std::map<Key, unsigned int> numbers_;
  std::vector<const ReportFragment*> fragments_;
};

void WriteSide(JsonWriter& writer, const ReportSide& side, const std::string& drawing,
               bool isOfPair) {
  writer.Object([&] {
    WriteText(writer, "name", side.name);
    WriteText(writer, "smiles", side.smiles);
    WriteText(writer, "drawing", drawing);
    writer.Key("atoms");
    writer.Numbers(side.marks.atoms);
    writer.Key("bonds");
    writer.Numbers(side.marks.bonds);
    writer.Key("covered");
    writer.Numbers(std::array{side.coveredAtoms, side.coveredBonds}, 4);
    if (isOfPair) {
      writer.Key("weights");
      writer.Numbers(side.weights, 4);
    }
  });
}

// Writes a pair, whose drawings have these names.
void WritePair(JsonWriter& writer, FragmentTable& table, const ReportPair& pair,
               const std::string& title, const std::vector<std::string>& drawings) {
  const bool isPair = pair.sides.size() == 2;
  writer.Object([&] {
    WriteText(writer, "title", title);
    if (isPair) {
      WriteText(writer, "measure", pair.measure);
      WriteText(writer, "score", pair.score);
      WriteText(writer, "formula", pair.formula);
      writer.Key("counts");
      writer.Numbers(pair.counts);
      writer.Key("scores");
      writer.Array([&] {
        for (const auto& score : pair.scores) {
          writer.Array([&] {
            writer.Text(score.first);
            writer.Text(score.second);
          });
        }
      });
    }
    writer.Key("sides");
    writer.Array([&] {
      for (std::size_t i = 0; i < pair.sides.size(); ++i) {
        WriteSide(writer, pair.sides[i], drawings[i], isPair);
      }
    });
    writer.Key("fragments");
    writer.Array([&] {
      for (const ReportFragment& fragment : pair.fragments) {
        writer.Array([&] {
          writer.Number(table.Find(fragment));
          if (!isPair) return;
          writer.Number(fragment.times[1]);
          WriteMarks(writer, fragment.marks[1]);
        });
      }
    });
  });
}

const char* ItemsOf(const ZQFPTypeBase* type) {
  const ZQFPKind* kind = ZQFindFPKind(type);
  return kind->measures == ZQFPMeasures::Lingos ? "Substrings"
         : kind->IsUnhashed()                   ? "Fragments"
                                                : "Bits";
}

// The words of a page about pairs or about one molecule.
void WriteWords(JsonWriter& writer, const ZQFPTypeBase* type, bool isPair) {
  WriteText(writer, "items", ItemsOf(type));
  WriteText(writer, "sharedLabel", isPair ? "Shared atoms and bonds" : "Covered atoms and bonds");
  WriteText(writer, "listTitle", isPair ? "Shared fragments, largest first" : "Fragments");
  const bool hasFragments = ZQFindFPKind(type)->fragments.overlap != nullptr;
  if (hasFragments) WriteText(writer, "covering", isPair ? "shared fragments" : "fragments");
  WriteText(writer, "listEmpty",
            hasFragments ? "There are none." : "This kind of fingerprint has none.");
}

// ---- pages

std::string MakePage(const std::string& title, const std::string& body, const JsonWriter& data) {
  std::string page = "<!DOCTYPE html>\n<html lang=\"en\" xmlns=\"http://www.w3.org/1999/xhtml\">\n";
  page += "<head>\n<meta charset=\"utf-8\" />\n";
  page += "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\" />\n";
  page += "<title>" + ZQToXmlText(title) + "</title>\n";
  page.append("<style>\n").append(reportStyle).append("</style>\n</head>\n<body>\n<main>\n");
  page += body;
  page += "<noscript><p>The lists of fragments need JavaScript.</p></noscript>\n</main>\n";
  page += "<script type=\"application/json\" id=\"data\">" + Embedded(data) + "</script>\n";
  page.append("<script>\n").append(reportScript).append("</script>\n</body>\n</html>\n");
  return page;
}

std::string Head(const std::string& title, const std::string& subtitle) {
  return Element("h1", "", ZQToXmlText(title)) + "\n" +
         Element("p", "class=\"muted\"", Element("code", "", ZQToXmlText(subtitle))) + "\n";
}

std::string Drawing(const char* name, const std::string& id, const std::string& svg) {
  return Element(name, "class=\"drawing\" data-drawing=\"" + id + "\"", svg);
}

std::string HitCard(const ReportHit& hit, std::size_t pair, const std::string& drawing) {
  const ReportSide& side = hit.pair.sides[1];
  const std::string score = Decimals(hit.score, 3);
  const std::string share = Decimals(100.0 * std::clamp(hit.score, 0.0, 1.0), 1);
  std::string card = Drawing("span", drawing, hit.drawing);
  card += Element(
      "span", "class=\"row\"",
      Element("span", "class=\"name\"", std::to_string(hit.rank) + ". " + ZQToXmlText(side.name)) +
          Element("span", "class=\"score\"", score));
  card += Element("span", "class=\"bar\"", "<i style=\"width:" + share + "%\"></i>");
  card = Element("span", "class=\"molecule\"", card);
  return Element(
             "li", "",
             Element("button",
                     "type=\"button\" class=\"hit card\" aria-haspopup=\"dialog\" data-pair=\"" +
                         std::to_string(pair) + "\"",
                     card)) +
         "\n";
}

}  // namespace

std::vector<unsigned int> IndicesOfMarks(const std::vector<bool>& marks) {
  std::vector<unsigned int> indices;
  for (std::size_t i = 0; i < marks.size(); ++i) {
    if (marks[i]) indices.push_back(static_cast<unsigned int>(i));
  }
  return indices;
}

Marks MarksOf(const ZQAtomBondSet& set) {
  return {IndicesOf(set.GetAtoms()), IndicesOf(set.GetBonds())};
}

std::array<Marks, 2> MarksOf(const ZQMatchBase& match) {
  std::array<Marks, 2> marks;
  for (const auto& pair : match.GetAtomPairs()) {
    marks[0].atoms.push_back(pair.pattern->GetIdx());
    marks[1].atoms.push_back(pair.target->GetIdx());
  }
  for (const auto& pair : match.GetBondPairs()) {
    marks[0].bonds.push_back(pair.pattern->GetIdx());
    marks[1].bonds.push_back(pair.target->GetIdx());
  }
  return marks;
}

void DrawnMolecule::Name() {
  smiles = ZQMolToOrderedSmiles(mol);
  name = mol.GetTitle().empty() ? smiles : mol.GetTitle();
}

bool DrawnMolecule::Draw(const DrawnMolecule* reference) {
  if (!ZQMakeLayout(layout, mol)) return false;
  if (reference) ZQOrientLayout(layout, mol, reference->layout, reference->mol);
  return true;
}

std::string DrawForReport(const DrawnMolecule& drawn) {
  ZQDrawStyle style;
  style.width = 360;
  style.height = 250;
  style.isInteractive = true;
  style.title = drawn.name;
  return drawn.layout.empty() ? ZQDrawSVG(ZQMol(), {}, style)
                              : ZQDrawSVG(drawn.mol, drawn.layout, style);
}

ReportPair DescribePair(const DrawnMolecule& a, const DrawnMolecule& b,
                        const ZQSimilarityExplanation& explanation, const ReportMeasure& measure) {
  ReportPair pair;
  const auto& [first, second] = explanation.sides;
  const bool isLingo = ZQFindFPKind(first.fp.GetFPTypeBase())->measures == ZQFPMeasures::Lingos;
  pair.counts = {first.count, second.count, explanation.both};
  pair.measure = ZQGetSimilarityMeasureName(measure.number);
  pair.score = Decimals(explanation.score, 3);
  pair.formula =
      TellFormula(measure, first.count, second.count, explanation.both,
                  isLingo ? first.count + second.count - explanation.both : first.fp.GetSize());
  unsigned int count = 0;
  if (isLingo && !ZQGetLingoSimTerms(first.fp, second.fp, &count, &count, &count)) {
    pair.formula = "0: a text of fewer than four characters only compares with its equal";
  }
  for (unsigned int number = 1; ZQSimMeasure::IsValid(number); ++number) {
    if (number == measure.number || !IsComparedBy(first.fp.GetFPTypeBase(), number)) continue;
    const float score = ZQGetSimilarity(number, first.fp, second.fp, measure.alpha, measure.beta);
    pair.scores.emplace_back(ZQGetSimilarityMeasureName(number), Decimals(score, 3));
  }
  for (const DrawnMolecule* drawn : {&a, &b}) {
    const auto& side = explanation.sides[pair.sides.size()];
    pair.sides.push_back({drawn->name,
                          drawn->smiles,
                          {IndicesOfMarks(side.sharedAtoms), IndicesOfMarks(side.sharedBonds)},
                          side.coveredAtoms,
                          side.coveredBonds,
                          side.weights});
  }
  Groups<std::string> groups;
  std::map<std::string_view, unsigned int> sizes;
  for (const ZQSharedFragment& fragment : explanation.overlap) {
    auto& places = groups[fragment.text];
    auto marks = MarksOf(fragment.match);
    sizes.try_emplace(fragment.text, fragment.match.NumAtoms());
    for (const std::size_t i : {0, 1}) places[i].Add(std::move(marks[i]));
  }
  for (const std::string& text : groups.Keys()) {
    auto& places = groups[text];
    pair.fragments.push_back({text,
                              sizes[text],
                              {places[0].Count(), places[1].Count()},
                              {places[0].Take(), places[1].Take()}});
  }
  return pair;
}

ReportPair DescribePatterns(const DrawnMolecule& drawn, const std::vector<ZQFPPattern>& patterns,
                            const Marks& covered) {
  ReportPair single;
  Groups<std::pair<std::string, unsigned int>> groups;
  std::map<std::string, unsigned int> sizes;
  for (const ZQFPPattern& pattern : patterns) {
    groups[{pattern.GetSMARTS(), pattern.GetBit()}][0].Add(MarksOf(pattern));
    sizes.try_emplace(pattern.GetSMARTS(), pattern.NumAtoms());
  }
  for (const auto& key : groups.Keys()) {
    Places& places = groups[key][0];
    single.fragments.push_back({key.first,
                                sizes[key.first],
                                {places.Count(), 0},
                                {places.Take(), Marks()},
                                static_cast<int>(key.second)});
  }
  std::ranges::stable_sort(single.fragments, std::greater(), &ReportFragment::size);
  single.sides.push_back({drawn.name,
                          drawn.smiles,
                          covered,
                          ShareOf(covered.atoms.size(), drawn.mol.GetAtoms(), ZQIsHeavy()),
                          ShareOf(covered.bonds.size(), drawn.mol.GetBonds(), HasHeavyEnds),
                          {}});
  return single;
}

ReportQuery DescribeQuery(const DrawnMolecule& query, const std::vector<ZQSimScore>& hits,
                          ZQFPHistogram histogram, const ReadMolecule& readMolecule,
                          const ZQFPTypeBase* type, const ReportMeasure& measure,
                          unsigned int threads) {
  std::vector<ReportHit> described(hits.size());
  std::atomic<std::size_t> next = 0;
  ZQRunOnThreads(threads, [&] {
    DrawnMolecule own = query;  // an explanation writes to its molecules
    for (std::size_t i = next++; i < hits.size(); i = next++) {
      DrawnMolecule hit;
      ZQSimilarityExplanation explanation;
      if (!readMolecule(hit.mol, hits[i].GetIdx())) continue;
      hit.Name();
      hit.Draw(&own);
      if (!ZQExplainSimilarity(explanation, own.mol, hit.mol, type, measure.number, measure.alpha,
                               measure.beta)) {
        continue;
      }
      described[i] = {static_cast<unsigned int>(i + 1), hits[i].GetScore(),
                      DescribePair(own, hit, explanation, measure), DrawForReport(hit)};
    }
  });
  std::erase_if(described, [](const ReportHit& hit) { return hit.rank == 0; });
  return {query.name, query.smiles, DrawForReport(query), std::move(histogram),
          std::move(described)};
}

std::string MakeExplanationPage(const ZQFPTypeBase* type, const ReportPair& pair,
                                const std::vector<std::string>& drawings) {
  std::string title = pair.sides.front().name;
  if (pair.sides.size() == 2) title += " and " + pair.sides.back().name;
  JsonWriter writer;
  writer.Object([&] {
    WriteWords(writer, type, pair.sides.size() == 2);
    FragmentTable table;
    writer.Key("pairs");
    writer.Array([&] { WritePair(writer, table, pair, title, {"m0", "m1"}); });
    writer.Key("fragments");
    table.Write(writer);
  });
  std::string store;
  for (std::size_t i = 0; i < drawings.size(); ++i) {
    store += Element("figure", "class=\"molecule card\"",
                     Drawing("div", "m" + std::to_string(i), drawings[i]));
  }
  std::string body = Head(title, type->GetFPTypeString());
  body += "<div id=\"explanation\"></div>\n" + Element("div", "class=\"store pair\"", store) + "\n";
  return MakePage(title, body, writer);
}

std::string MakeSearchPage(const ZQFPTypeBase* type, unsigned int measure,
                           const std::string& database, const std::vector<ReportQuery>& queries) {
  const std::string name = ZQGetSimilarityMeasureName(measure);
  const std::string title = queries.size() == 1
                                ? "Search for " + queries.front().name
                                : "Search for " + std::to_string(queries.size()) + " molecules";
  std::string body = Head(title, database + ", " + type->GetFPTypeString());
  JsonWriter writer;
  writer.Object([&] {
    WriteWords(writer, type, true);
    FragmentTable table;
    std::size_t numPairs = 0;
    writer.Key("pairs");
    writer.Array([&] {
      for (std::size_t q = 0; q < queries.size(); ++q) {
        const ReportQuery& query = queries[q];
        const std::string drawing = "q" + std::to_string(q);
        std::string caption = Element("div", "class=\"name\"", ZQToXmlText(query.name));
        if (query.smiles != query.name) {
          caption +=
              Element("p", "class=\"muted\"", Element("code", "", ZQToXmlText(query.smiles)));
        }
        std::vector<double> scores;
        scores.reserve(query.hits.size());
        for (const ReportHit& hit : query.hits) scores.push_back(hit.score);
        const std::string plot =
            Element("h2", "",
                    "Scores (" + name + ") of " + std::to_string(query.histogram.NumSamples()) +
                        " records") +
            PlotScores(query.histogram, scores) +
            Element("p", "class=\"muted\"",
                    "Number of records by score, on a logarithmic scale; "
                    "the bins of the hits have another colour.");
        body += Element("section", "class=\"query\"",
                        Element("figure", "class=\"molecule card\"",
                                Drawing("div", drawing, query.drawing) +
                                    Element("figcaption", "", caption)) +
                            Element("div", "class=\"card\"", plot)) +
                "\n<ul class=\"hits\">\n";
        for (const ReportHit& hit : query.hits) {
          const std::string hitDrawing = "h" + std::to_string(numPairs);
          const std::string pairTitle = query.name + " and " + hit.pair.sides[1].name;
          body += HitCard(hit, numPairs++, hitDrawing);
          WritePair(writer, table, hit.pair, pairTitle, {drawing, hitDrawing});
        }
        body += "</ul>\n";
        if (query.hits.empty())
          body += Element("p", "class=\"muted\"", "There are no hits.") + "\n";
      }
    });
    writer.Key("fragments");
    table.Write(writer);
  });
  body += "<dialog></dialog>\n";
  return MakePage(title, body, writer);
}

}  // namespace KorvexProgram
