// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/JoinedSession.h"

#include "kits/support/ClientName.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace vexa {

kits::Result<std::optional<JoinedSession>> JoinSession(const AppOptions& options) {
    using Joined = std::optional<JoinedSession>;
    const char* const url = std::getenv("NSM_URL");
    if (!url || !*url)
        return Joined();
    auto session = Session::Join(url, !options.noWindow);
    if (!session) {
        std::fprintf(stderr, "vexa: warning: there is no session: %s\n",
                     session.Fault().text.c_str());
        return Joined();
    }
    kits::SetClientName((*session)->Name());
    JoinedSession joined{*std::move(session), {}};
    joined.project.options = options;
    const auto& folder = joined.session->Project();
    if (!ProjectExists(folder))
        return Joined(std::move(joined));
    auto project = ReadProject(folder, options);
    if (!project) {
        joined.session->TellOpened(project.Fault(), false);
        return project.Fault();
    }
    joined.project = *std::move(project);
    return Joined(std::move(joined));
}

} // namespace vexa
