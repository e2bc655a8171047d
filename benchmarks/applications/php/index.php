<?php
// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// The measured requests, answered with what PHP brings along.

function reply(string $body): void
{
    header('Content-Type: application/json');
    echo $body, "\n";
}

function refuse(int $status): void
{
    http_response_code($status);
    echo $status;
}

function echoOrder(): void
{
    $o = json_decode(file_get_contents('php://input'));
    if (!is_object($o) || !is_int($o->id ?? null) || !is_int($o->account ?? null)
        || !is_int($o->quantity ?? null) || !is_numeric($o->price ?? null)
        || !is_bool($o->express ?? null) || !is_string($o->customer ?? null)
        || !is_string($o->address ?? null) || !is_string($o->note ?? null)) {
        refuse(400);
        return;
    }
    reply("{\"id\":$o->id,\"account\":$o->account,\"quantity\":$o->quantity,\"price\":$o->price,"
        . '"express":' . ($o->express ? 'true' : 'false') . ",\"customer\":\"$o->customer\","
        . "\"address\":\"$o->address\",\"note\":\"$o->note\"}");
}

function sendProfile(): void
{
    $sessions = ['{6f1c8f0e-52a4-4f0f-9d53-0d1f5b7c9a21}' =>
        ['token' => '{c2b8a7d4-3e19-4c6b-8f70-a5e4d3c2b190}', 'user' => 'ada']];
    $parts = preg_split('/[ :]/', $_SERVER['HTTP_AUTHORIZATION'] ?? '');
    $session = count($parts) == 3 && $parts[0] == 'SESSION-TOKEN' ? $sessions[$parts[1]] ?? null : null;
    if ($session && hash_equals($session['token'], $parts[2])) {
        reply("{\"user\":\"{$session['user']}\"}");
    } else {
        refuse(401);
    }
}

match ($_SERVER['PATH_INFO'] ?? '') {
    '/hello' => reply('{"hello":"' . ($_GET['name'] ?? '') . '","theme":"' . ($_COOKIE['theme'] ?? '') . '"}'),
    '/json' => echoOrder(),
    '/form' => reply('{"fields":' . count($_POST) . '}'),
    '/upload' => reply('{"size":' . ($_FILES['file']['size'] ?? -1) . '}'),
    '/v1/users/profile' => sendProfile(),
    default => refuse(404),
};
