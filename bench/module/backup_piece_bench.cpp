#include <filesystem>
#include <fstream>

#include "backup/backup_file.h"
#include "bench/module/bare_append.h"
#include "bench/module/module_bench.h"
#include "bench/support/allocations.h"

namespace tavira::bench {
namespace {

constexpr int kPiecesInFile = 256;

void Empty(const std::filesystem::path& path) {
  std::ofstream(path, std::ios::binary).flush();
}

void ComparePieces(IFileSystem& files, std::size_t size) {
  const std::filesystem::path folder = std::filesystem::temp_directory_path();
  const std::filesystem::path peer_path = folder / "tavira_bench_peer.bak";
  const std::filesystem::path our_path = folder / "tavira_bench_ours.bak";
  const std::string piece(size, 'x');
  CBackupFile ours(files, our_path.string<TvmgrChar>());
  Require(ours.Create());
  Empty(peer_path);
  int our_pieces = 0;
  int peer_pieces = 0;
  // Both files are emptied now and then, in the same way.
  const auto took = Compare(
      [&] {
        if (++our_pieces % kPiecesInFile == 0) {
          Empty(our_path);
        }
        Require(ours.Append(piece));
      },
      [&] {
        if (++peer_pieces % kPiecesInFile == 0) {
          Empty(peer_path);
        }
        Require(AppendBare(peer_path, piece) ? TVMGR_OK : TVMGR_FILE_ERROR);
      },
      kFileTime);
  ReportWithin("P7", "backup piece of " + std::to_string(size) + " bytes" + kWhere, "bare calls", took, 1.1);
  const tagAllocations allocations = CountAllocations([&] { Require(ours.Append(piece)); });
  ReportFigure("P12", "allocations of a backup piece" + kWhere, static_cast<double>(allocations.count), "",
               0);
  std::filesystem::remove(our_path);
  std::filesystem::remove(peer_path);
}

}  // namespace

void MeasureBackupPiece() {
  const auto files = MakeFileSystem();
  ComparePieces(*files, 100);
  ComparePieces(*files, 100000);
}

}  // namespace tavira::bench
