/// Does the same operations on the library and on the model, and compares every result, every text that is written or
/// emitted, every field of an event, and every byte.
///
/// Threads  one. It uses the process's file manager, and removes all of its files before and after.
#ifndef CORVANE_TESTS_RAMFS_FILECOMPARISON_H
#define CORVANE_TESTS_RAMFS_FILECOMPARISON_H

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <testing/eventRecorder.h>

#include "tests/ramfs/fileModel.h"
#include "tests/ramfs/ramfsTestSupport.h"

namespace Corvane::RamFs::V1 {

class FileComparison
{
public:
    /// Gives a number below its argument: the choices of operations and of their arguments.
    using Choose = std::function<unsigned int(unsigned int)>;

    FileComparison(Choose choose, Testing::EventRecorder& recorder);
    ~FileComparison();
    FileComparison(const FileComparison&) = delete;
    FileComparison& operator=(const FileComparison&) = delete;

    /// Does one operation.
    ///
    /// Returns  how library and model differ; empty if they don't.
    std::string operate();

    /// What was done so far, as the model tells it.
    const std::vector<std::string>& history() const { return m_history; }

    /// Counts cases. A run in which one of them is rare tests too little.
    struct
    {
        int created = 0;
        int taken = 0;
        int opened = 0;
        int tookOut = 0;
        int sharedNumber = 0;
        int replaced = 0;
        int removedSeveral = 0;
        int removedToCout = 0;
        int cut = 0;
        int streamed = 0;
    } met;

private:
    /// A handle of the library beside its model.
    struct HandlePair
    {
        Handle real;
        Testing::ModelHandle model;
    };

    /// A stream buffer beside its model: a handle and the text that waits.
    struct BufferPair
    {
        std::shared_ptr<FileStreamBufIf> real;
        std::optional<Testing::ModelHandle> model;
        std::string pending;
    };

    template <typename Value, std::size_t count>
    const Value& oneOf(const Value (&values)[count])
    {
        return values[m_choose(count)];
    }

    template <typename Real, typename Model>
    void expectSame(const char* what, const Real& real, const Model& model);

    std::string someName();
    int someRef();
    std::string someBytes();
    Testing::ModelDirectory::Order order();
    void keep(const Handle& real, const std::optional<Testing::ModelHandle>& model);

    void useDirectory();
    void create(const std::string& name, int ref, std::size_t filesBefore);
    void openAll(const Testing::ModelDirectory::Order& names);
    void removeSome();
    void useHandle(HandlePair& pair);
    void writeSome(HandlePair& pair);
    void askHandle(HandlePair& pair);
    void useBuffer(BufferPair& pair);
    void openBuffer(BufferPair& pair);
    void syncModel(BufferPair& pair);
    void compareBytes(const HandlePair& pair);
    void compareEmissions();

    const Choose m_choose;
    Testing::EventRecorder& m_recorder;
    FileManagerImpl& m_manager = dynamic_cast<FileManagerImpl&>(FileManagerIf::getInstance());
    Testing::ModelDirectory m_model{FileManagerTestAccess::fileRefCounter(m_manager)};
    std::vector<HandlePair> m_handles;
    std::vector<BufferPair> m_buffers;
    std::vector<std::string> m_history;
    std::string m_difference;
};

} // namespace Corvane::RamFs::V1

#endif
