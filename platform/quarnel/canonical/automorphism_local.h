#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "platform/quarnel/molecule/molgraph_view_local.h"
#include "platform/quarnel/perception/partition_local.h"

namespace Quarnel {

/// An atom or double bond with a configuration.
struct StereoCentre {
  std::uint32_t atom;
  std::uint32_t bond;  // MolView::none for an atom

  bool IsBond() const { return bond != MolView::none; }
};

/// Searches automorphisms that map each cell of a partition onto itself.
///
/// A search starts from one atom mapped onto another and follows the consequences: the neighbours
/// of a moved atom, and atoms that are another's image, need images. If there is a choice, an atom
/// is preferably fixed, or exchanged with the atom mapped onto it, so that the search stays local:
/// a flipped phenyl ring costs its own atoms, in a molecule of any size.
class AutomorphismSearch {
 public:
  struct Move {
    std::uint32_t from;
    std::uint32_t to;
  };

  /// Sets the graph for all searches until the next call. Together they visit at most `budget`
  /// edges, each at most `limit`. View and partition must outlive the searches.
  void SetGraph(const MolView& view, const Partition& partition, std::uint64_t budget,
                std::uint64_t limit);
  /// Requires searches to preserve the configurations of these centres as well, and to invert that
  /// of `turned` if not null. Those determined by the partition's cells needn't be listed.
  void Watch(std::span<const StereoCentre> centres, const StereoCentre* turned = nullptr);

  /// Searches an automorphism with this mapping; false also if the budget or limit is spent.
  bool Find(std::uint32_t from, std::uint32_t to);
  /// The atoms with an assigned image in the last automorphism found; some are fixed. If it maps
  /// one component onto another, the inverse mapping isn't listed.
  std::span<const Move> Moves() const { return moves_; }

  void Spend(std::uint64_t edges) { budget_ -= edges < budget_ ? edges : budget_; }
  std::uint64_t BudgetLeft() const { return budget_; }

 private:
  /// An atom that had several targets, and the state before one was chosen.
  struct Choice {
    std::uint32_t atom;
    std::size_t nextTarget;
    std::size_t trail;
    std::size_t queue;
    std::size_t head;
  };
  /// The configurations watched at an atom.
  struct Watched {
    bool centre = false;
    std::uint32_t bond = MolView::none;
    bool turned = false;
  };

  bool Complete();
  bool Place(std::uint32_t atom, std::size_t choice);
  bool Backtrack();
  void Assign(std::uint32_t from, std::uint32_t to);
  void UndoTo(std::size_t trail);
  void ListTargets(std::uint32_t atom);
  bool Fits(std::uint32_t atom, std::uint32_t target);
  std::uint32_t FindBroken();
  bool QueueAround(std::uint32_t atom);
  bool Keeps(std::uint32_t atom, bool last) const;
  bool KeepsCentre(std::uint32_t atom, bool last) const;
  bool KeepsBond(std::uint32_t atom, bool last) const;
  std::uint32_t ImageOf(std::uint32_t atom, bool last) const {
    return last && image_[atom] == MolView::none ? atom : image_[atom];
  }

  const MolView* view_ = nullptr;
  const Partition* partition_ = nullptr;
  std::uint64_t budget_ = 0;
  std::uint64_t limit_ = 0;
  std::vector<Watched> watched_;  // by atom, empty for none
  std::vector<Move> moves_;
  // Of one search. An atom that is neither an image nor has one is fixed.
  std::vector<std::uint32_t> image_;
  std::vector<std::uint32_t> source_;
  std::vector<std::uint32_t> trail_;  // atoms with an image, in the order of assignment
  std::vector<std::uint32_t> queue_;  // atoms that need an image and have a neighbour with one
  std::size_t head_ = 0;
  std::vector<Choice> choices_;
  std::vector<std::uint32_t> targets_;
};

}  // namespace Quarnel
