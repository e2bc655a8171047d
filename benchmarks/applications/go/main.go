// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// The measured requests, answered with Go's standard library.
package main

import (
	"crypto/subtle"
	"encoding/json"
	"fmt"
	"io"
	"log"
	"net"
	"net/http"
	"net/http/fcgi"
	"os"
	"strings"
)

var sessions = map[string]struct{ token, user string }{
	"{6f1c8f0e-52a4-4f0f-9d53-0d1f5b7c9a21}": {"{c2b8a7d4-3e19-4c6b-8f70-a5e4d3c2b190}", "ada"},
}

type order struct {
	ID       uint32  `json:"id"`
	Account  int64   `json:"account"`
	Quantity uint16  `json:"quantity"`
	Price    float64 `json:"price"`
	Express  bool    `json:"express"`
	Customer string  `json:"customer"`
	Address  string  `json:"address"`
	Note     string  `json:"note"`
}

func reply(writer http.ResponseWriter, format string, values ...any) {
	writer.Header().Set("Content-Type", "application/json")
	fmt.Fprintf(writer, format, values...)
}

func badRequest(writer http.ResponseWriter) {
	http.Error(writer, "400 - Bad Request", http.StatusBadRequest)
}

func hello(writer http.ResponseWriter, request *http.Request) {
	theme := ""
	if cookie, err := request.Cookie("theme"); err == nil {
		theme = cookie.Value
	}
	reply(writer, "{\"hello\":\"%s\",\"theme\":\"%s\"}\n", request.URL.Query().Get("name"), theme)
}

func echoOrder(writer http.ResponseWriter, request *http.Request) {
	var o order
	body, err := io.ReadAll(request.Body)
	if err != nil || json.Unmarshal(body, &o) != nil {
		badRequest(writer)
		return
	}
	reply(writer, "{\"id\":%d,\"account\":%d,\"quantity\":%d,\"price\":%g,\"express\":%t,"+
		"\"customer\":\"%s\",\"address\":\"%s\",\"note\":\"%s\"}\n",
		o.ID, o.Account, o.Quantity, o.Price, o.Express, o.Customer, o.Address, o.Note)
}

func countFields(writer http.ResponseWriter, request *http.Request) {
	if request.ParseForm() != nil {
		badRequest(writer)
		return
	}
	reply(writer, "{\"fields\":%d}\n", len(request.PostForm))
}

func upload(writer http.ResponseWriter, request *http.Request) {
	file, header, err := request.FormFile("file")
	if err != nil {
		badRequest(writer)
		return
	}
	defer file.Close()
	reply(writer, "{\"size\":%d}\n", header.Size)
}

func profile(writer http.ResponseWriter, request *http.Request) {
	scheme, credentials, _ := strings.Cut(request.Header.Get("Authorization"), " ")
	id, token, _ := strings.Cut(credentials, ":")
	session, known := sessions[id]
	if scheme != "SESSION-TOKEN" || !known || subtle.ConstantTimeCompare([]byte(token), []byte(session.token)) != 1 {
		http.Error(writer, "401 - Unauthorized", http.StatusUnauthorized)
		return
	}
	reply(writer, "{\"user\":\"%s\"}\n", session.user)
}

func main() {
	if len(os.Args) != 2 {
		log.Fatalf("usage: %s SOCKET", os.Args[0])
	}
	listener, err := net.Listen("unix", os.Args[1])
	if err != nil {
		log.Fatal(err)
	}
	http.HandleFunc("/api/hello", hello)
	http.HandleFunc("/api/json", echoOrder)
	http.HandleFunc("/api/form", countFields)
	http.HandleFunc("/api/upload", upload)
	http.HandleFunc("/api/v1/users/profile", profile)
	log.Fatal(fcgi.Serve(listener, nil))
}
