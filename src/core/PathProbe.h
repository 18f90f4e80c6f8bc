// SPDX-License-Identifier: MIT
#pragma once

#include "async/Cancellation.h"

#include <QCoroTask>
#include <QObject>

#include <filesystem>
#include <memory>
#include <optional>

namespace cartloom
{

/// Finds out whether something exists at a path. A volume that does not answer blocks whoever asks, so a
/// thread of its own asks, and ask() waits half a second at most. Main thread.
class PathProbe : public QObject
{
    Q_OBJECT

public:
    /// Asks, unless the last question is about the same path and still open. Waits half a second for the
    /// answer, less if the last one was late.
    void ask(const std::filesystem::path& path);

    /// The path of the last question if something exists there; none while the answer is not known.
    [[nodiscard]] std::optional<std::filesystem::path> found() const;
    /// True while the last question has no answer.
    [[nodiscard]] bool isOpen() const;
    /// Drops the last question.
    void forget() { m_question.reset(); }

    /// Finishes when the last question has an answer, or when the token fires.
    [[nodiscard]] QCoro::Task<void> settled(CancellationToken token);

Q_SIGNALS:
    /// The last question was answered after ask() had returned.
    void answeredLate();
    /// A reason to look again; part of settled().
    void woken();

private:
    struct Question;

    std::shared_ptr<Question> m_question;
    bool m_wasLate = false;
};

} // namespace cartloom
