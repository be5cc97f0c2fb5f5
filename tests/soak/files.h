/// Operations on the file system, each compared with the plain model of its rules.
#ifndef CORVANE_TESTS_SOAK_FILES_H
#define CORVANE_TESTS_SOAK_FILES_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <ramfs/fileManagerIf.h>

#include "tests/ramfs/fileModel.h"
#include "tests/soak/worker.h"

namespace Corvane::Soak {

/// The files of one thread. Their names and numbers are its own; all threads also append to one shared file.
class Files
{
public:
    explicit Files(Worker& worker);

    /// Does one operation.
    void operate();

private:
    using Handle = std::shared_ptr<RamFs::V1::FileHandleIf>;
    struct HandlePair
    {
        Handle real;
        Testing::ModelHandle model;
    };

    std::string someBytes();
    int someRef();
    Testing::ModelDirectory::Order order() const;
    void keep(const Handle& real, const std::optional<Testing::ModelHandle>& model);
    void create();
    void open();
    void remove();
    void list();
    void useHandle(HandlePair& pair);
    void change(HandlePair& pair);
    void stream();
    void appendToSharedFile();
    void readSharedFile();
    void compareBytes(HandlePair& pair);

    Worker& m_worker;
    const std::string m_prefix;
    const std::vector<std::string> m_names;
    Testing::ModelDirectory m_model{0};
    std::vector<HandlePair> m_handles;
    int m_nextRef;
    unsigned int m_sharedRecords = 0;
};

} // namespace Corvane::Soak

#endif
