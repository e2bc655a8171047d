// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTDESCRIPTION_P_H
#define BWARESTDESCRIPTION_P_H

#include <QString>
#include <QVariant>

#include <vector>

class BwaRestRoute;

/** The OpenAPI document of routes. */
namespace BwaRestDescription {

/** The document that BwaRestService::describe() returns. */
QVariantMap of(const std::vector<const BwaRestRoute*>& routes, const QString& title,
               const QString& version);

} // namespace BwaRestDescription

#endif
